#include <gtest/gtest.h>

#include <cmath>

#include "Messages.h"
#include "TestImages.h"
#include "zel/HostImage.h"
#include "zel/TarnwayImage.h"
#include "zel/TemporaryImage.h"

using namespace zel;
using test::messageOf;
using testing::HasSubstr;

TEST(HostImage, OwnsZeroedVoxelsOfEveryType) {
    for (const VoxelTypes type : allVoxelTypes) {
        HostImage image(type, {5, 4, 3, 2, 2});
        const std::vector<char> zeros(image.extentBytes());
        EXPECT_EQ(image.extentBytes(), 240 * helper::getSizeOf(type));
        EXPECT_EQ(std::memcmp(image.hostDataReadOnly(), zeros.data(), zeros.size()), 0);
        EXPECT_EQ(voxelTypeFromName(voxelTypeName(type)), type);
    }
    EXPECT_EQ(voxelTypeFromName("half"), std::nullopt);
    EXPECT_THROW(helper::getSizeOf(static_cast<VoxelTypes>(12)), UnexpectedError);
}

TEST(HostImage, ReadsAndWritesRowsWhereTheyLie) {
    HostImage image(VoxelTypes::uint16, {4, 3, 2, 2, 2});
    const std::uint16_t written[] = {7, 8};
    ASSERT_TRUE(image.writeRow(2, written, 1, 2, 1, 0, 1));
    // Element (1, 2, 1, 0, 1), x fastest.
    const std::size_t position = (((1 * 2 + 0) * 2 + 1) * 3 + 2) * 4 + 1;
    EXPECT_EQ(test::voxels<std::uint16_t>(image)[position], 7);
    EXPECT_EQ(test::voxels<std::uint16_t>(image)[position + 1], 8);
    std::uint16_t read[2] = {};
    ASSERT_TRUE(image.readRow(2, read, 1, 2, 1, 0, 1));
    EXPECT_EQ(read[1], 8);

    EXPECT_FALSE(image.readRow(2, read, 3, 0, 0, 0, 0)) << "over the row's end";
    EXPECT_FALSE(image.readRow(1, read, SIZE_MAX, 0, 0, 0, 0));
    EXPECT_FALSE(image.readRow(1, read, 0, 3, 0, 0, 0));
    EXPECT_FALSE(image.writeRow(1, read, 0, 0, 0, 0, 2));
}

TEST(HostImage, ShowsMemoryWithLongerRows) {
    std::uint8_t memory[] = {1, 2, 3, 99, 4, 5, 6};
    HostImage image(VoxelTypes::uint8, {3, 2}, memory, 4);
    EXPECT_EQ(test::readAll<std::uint8_t>(image), (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(image.hostDataReadOnly(), nullptr) << "rows with gaps are no contiguous data";
    EXPECT_EQ(image.extentBytes(), sizeof memory);
    HostImage packed(VoxelTypes::uint8, {7}, memory);
    EXPECT_EQ(packed.hostDataWritable(), memory);
    EXPECT_THAT(messageOf<RuntimeError>([&] {
                    HostImage(VoxelTypes::uint16, {3, 2}, memory, 5);
                }),
                HasSubstr("a row pitch of 5 bytes is too small for rows of 6 bytes"));
}

TEST(HostImage, RefusesWhatCannotBeHad) {
    EXPECT_THAT(messageOf<RuntimeError>([] {
                    HostImage(VoxelTypes::float64, {SIZE_MAX / 8, 2});
                }),
                HasSubstr("more bytes than this machine can count"));
    EXPECT_THAT(messageOf<RuntimeError>([] { HostImage(VoxelTypes::uint8, {std::size_t{1} << 60}); }),
                HasSubstr("cannot allocate 1152921504606846976 bytes"));
}

TEST(LocatedImage, KeepsItsSpacingWhenToldABadOne) {
    HostImage image(VoxelTypes::uint8, {1});
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) EXPECT_THROW(image.setSpacing(0, bad), RuntimeError);
    EXPECT_EQ(image.getSpacing(0), 1);
}

TEST(TarnwayImage, WithoutAViewIsEmpty) {
    TarnwayImage image(nullptr);
    char byte = 0;
    EXPECT_EQ(image.getDimension(0), 0U);
    EXPECT_FALSE(image.isDeviceResident());
    EXPECT_FALSE(image.readRow(0, &byte, 0, 0, 0, 0, 0));
    EXPECT_FALSE(image.writeRow(0, &byte, 0, 0, 0, 0, 0));
}

TEST(TemporaryImage, IsMadeAnewByEachReserve) {
    const RefImpl<TemporaryImage> temporary = TemporaryImage::New(LocationMode::hostMemory);
    EXPECT_EQ(temporary->getImageModel(), nullptr);
    temporary->reserve(VoxelTypes::float32, 4, 3, 2, 1, 1);
    const float one = 1;
    ASSERT_TRUE(temporary->getImageModel()->writeRow(1, &one, 3, 2, 1, 0, 0));
    temporary->reserve(VoxelTypes::float32, 2, 2, 1, 1, 1);
    EXPECT_EQ(test::readAll<float>(*temporary->getImageModel()), std::vector<float>(4));
    EXPECT_THROW(TemporaryImage::New(static_cast<LocationMode>(2)), RuntimeError);
}
