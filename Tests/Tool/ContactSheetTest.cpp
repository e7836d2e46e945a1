#include "Demo/ContactSheet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Demo/BitmapFont.h"
#include "TestImages.h"

namespace zel::test {

using tool::ContactSheet;

namespace {

unsigned char pixelAt(const HostImage& picture, std::size_t x, std::size_t y) {
    unsigned char value = 0;
    EXPECT_TRUE(picture.readRow(1, &value, x, y, 0, 0, 0));
    return value;
}

}  // namespace

TEST(BitmapFont, DrawsLettersAtAnyScaleAndStaysInThePicture) {
    HostImage small(VoxelTypes::uint8, {11, 8});
    tool::drawText(small, "Lx", 0, 0, 1, 9);
    std::string rows;
    for (std::size_t y = 0; y < 8; ++y) {
        for (std::size_t x = 0; x < 11; ++x) rows += pixelAt(small, x, y) == 9 ? '#' : '.';
        rows += '\n';
    }
    EXPECT_EQ(rows,
              "#..........\n"
              "#..........\n"
              "#.....#...#\n"
              "#......#.#.\n"
              "#.......#..\n"
              "#......#.#.\n"
              "#####.#...#\n"
              "...........\n");

    HostImage large(VoxelTypes::uint8, {13, 9});  // too small for the text
    tool::drawText(large, "L\xff", 1, 1, 2, 9);
    EXPECT_EQ(pixelAt(large, 0, 1), 0);
    EXPECT_EQ(pixelAt(large, 1, 1) + pixelAt(large, 2, 2), 18);
    EXPECT_EQ(pixelAt(large, 3, 3), 0);
}

TEST(ContactSheet, ShowsTheMiddleSliceOfEachImage) {
    HostImage picture(VoxelTypes::uint8, {512, 256});  // halved, so that each pixel is the mean of four
    for (std::size_t i = 0; i < 512 * 256; ++i) voxels<std::uint8_t>(picture)[i] = i % 2 == 0 ? 100 : 50;
    HostImage volume(VoxelTypes::float32, {2, 2, 3});
    const float middle[] = {-5, std::nanf(""), 0, 5};
    for (std::size_t i = 0; i < 12; ++i) voxels<float>(volume)[i] = i / 4 == 1 ? middle[i % 4] : 1000;

    ContactSheet sheet;
    sheet.add(picture, "picture");
    sheet.add(volume, "volume");
    const HostImage result = sheet.render();
    const std::size_t left = 16, top = 16, next = 256 + 16;
    EXPECT_EQ(result.getDimension(0), left + 2 * next);
    EXPECT_EQ(pixelAt(result, left, top), 75);
    EXPECT_EQ(pixelAt(result, left + 255, top + 127), 75);
    EXPECT_NE(pixelAt(result, left, top + 128), 75) << "half as high as wide";
    // From the smallest value in black to the largest in white; what is no number is black.
    EXPECT_EQ(pixelAt(result, left + next, top), 0);
    EXPECT_EQ(pixelAt(result, left + next + 255, top), 0);
    EXPECT_EQ(pixelAt(result, left + next, top + 255), 128);
    EXPECT_EQ(pixelAt(result, left + next + 255, top + 255), 255);
}

TEST(ContactSheet, OfNothingAndOfConstantImagesIsStillAPicture) {
    EXPECT_GT(ContactSheet().render().getDimension(0), 0U);
    ContactSheet sheet;
    for (int i = 0; i < 5; ++i) sheet.add(HostImage(VoxelTypes::float64, {3, 1}), std::string(300, 'x'));
    EXPECT_EQ(sheet.render().getDimension(0), 16U + 4 * (256 + 16));
}

}  // namespace zel::test
