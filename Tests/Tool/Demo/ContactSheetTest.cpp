#include "Demo/ContactSheet.h"

#include <cmath>

#include "TestImages.h"

namespace zel::test {

using tool::ContactSheet;

class ContactSheetTest : public ::testing::Test {
protected:
    /// @param x, y  from the corner of a panel's picture.
    int pixelAt(std::size_t panel, std::size_t x, std::size_t y) const {
        const HostImage result = sheet.render();
        const std::size_t left = 16 + panel * (256 + 16), top = 16;
        return static_cast<const std::uint8_t*>(result.data())[(top + y) * result.getDimension(0) + left + x];
    }

    ContactSheet sheet;
};

TEST_F(ContactSheetTest, ShowsTheMiddleSliceOfEachImage) {
    HostImage picture(VoxelTypes::uint8, {512, 256});  // halved, so that each pixel is the mean of four
    for (std::size_t i = 0; i < 512 * 256; ++i) voxels<std::uint8_t>(picture)[i] = i % 2 == 0 ? 100 : 50;
    std::vector<float> values{1000, 1000, 1000, 1000, -5, std::nanf(""), 0, 5, 1000, 1000, 1000, 1000};
    sheet.add(picture, "picture");
    sheet.add(HostImage(VoxelTypes::float32, {2, 2, 3}, values.data()), "volume");
    EXPECT_EQ(pixelAt(0, 0, 0), 75);
    EXPECT_EQ(pixelAt(0, 255, 127), 75);
    EXPECT_NE(pixelAt(0, 0, 128), 75) << "half as high as wide";
    // From the smallest value in black to the largest in white; NaN is black.
    EXPECT_EQ(pixelAt(1, 0, 0), 0);
    EXPECT_EQ(pixelAt(1, 255, 0), 0);
    EXPECT_EQ(pixelAt(1, 0, 255), 128);
    EXPECT_EQ(pixelAt(1, 255, 255), 255);
}

TEST_F(ContactSheetTest, PutsCaptionsBelowThePanels) {
    sheet.add(HostImage(VoxelTypes::float64, {3, 1}), "L\xff");
    const std::string glyphs[] = {
        "#.....###.", "#....#...#", "#........#", "#.......#.", "#......#..", "#.........", "#####..#..",
    };
    for (std::size_t y = 0; y < 7 * 2; ++y) {
        std::string row;
        for (std::size_t x = 0; x < 11; ++x) row += pixelAt(0, 2 * x, 256 + 6 + y) > 100 ? '#' : '.';
        EXPECT_EQ(row.substr(0, 5) + row.substr(6), glyphs[y / 2]) << y;
    }
}

TEST_F(ContactSheetTest, TakesNoImagesAndCutsLongCaptions) {
    EXPECT_GT(sheet.render().getDimension(0), 0U);
    for (int i = 0; i < 5; ++i) sheet.add(HostImage(VoxelTypes::float64, {3, 1}), std::string(300, 'x'));
    EXPECT_EQ(sheet.render().getDimension(0), 16U + 4 * (256 + 16));
}

}  // namespace zel::test
