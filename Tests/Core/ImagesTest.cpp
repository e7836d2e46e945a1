#include <gtest/gtest.h>

#include <cmath>

#include "Messages.h"
#include "TestImages.h"
#include "zel/HostImage.h"
#include "zel/ImageModelAdapter.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"
#include "zel/TemporaryImage.h"

using namespace zel;
using test::messageOf;
using testing::HasSubstr;

TEST(HostImageTest, OwnsZeroedVoxelsOfEveryType) {
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

TEST(HostImageTest, ReadsAndWritesRowsWhereTheyLie) {
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

TEST(HostImageTest, ShowsMemoryWithLongerRows) {
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

TEST(HostImageTest, RefusesWhatCannotBeHad) {
    EXPECT_THAT(messageOf<RuntimeError>([] {
                    HostImage(VoxelTypes::float64, {SIZE_MAX / 8, 2});
                }),
                HasSubstr("more bytes than this machine can count"));
    EXPECT_THAT(messageOf<RuntimeError>([] { HostImage(VoxelTypes::uint8, {std::size_t{1} << 60}); }),
                HasSubstr("cannot allocate 1152921504606846976 bytes"));
    char memory[8];
    EXPECT_THAT(messageOf<RuntimeError>([&] {
                    HostImage(VoxelTypes::uint8, {1, SIZE_MAX / 4}, memory, 8);
                }),
                HasSubstr("more bytes than this machine can count"));
}

TEST(LocatedImageTest, KeepsItsSpacingWhenToldABadOne) {
    HostImage image(VoxelTypes::uint8, {1});
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) EXPECT_THROW(image.setSpacing(0, bad), RuntimeError);
    EXPECT_EQ(image.getSpacing(0), 1);
}

TEST(TarnwayImageTest, WithoutAViewIsEmpty) {
    TarnwayImage image(nullptr);
    char byte = 0;
    EXPECT_EQ(image.getDimension(0), 0U);
    EXPECT_FALSE(image.isDeviceResident());
    EXPECT_FALSE(image.readRow(0, &byte, 0, 0, 0, 0, 0));
    EXPECT_FALSE(image.writeRow(0, &byte, 0, 0, 0, 0, 0));
}

TEST(ImageModelTest, TakesOverThePlaceOfAnother) {
    HostImage other(VoxelTypes::uint8, {2, 2, 2});
    for (const int axis : {0, 1, 2}) {
        other.setOrigin(axis, 10.0 + axis);
        other.setSpacing(axis, 2.0 + axis);
    }
    const ImageModel::Orientation turned = {tarnway::Vector<double, 3>(0, 1, 0), tarnway::Vector<double, 3>(-1, 0, 0),
                                            tarnway::Vector<double, 3>(0, 0, 1)};
    other.setOrientation(turned);

    HostImage image(VoxelTypes::uint8, {4, 4, 4});
    // A part takes the place itself; the image behind it moves along.
    ImageModelSizeProxy part(&image, 1, 2, 2, 2, 3, 1, 0, 1, 0, 1);
    ImageModelAdapter seenAsFloat(&part, VoxelTypes::float32, DataConvertionTypes::cast);
    seenAsFloat.enforceSameCharacteristics(&other, 4);
    ImageModel::Orientation orientation;
    image.getOrientation(orientation);
    EXPECT_EQ(orientation, turned);
    for (const int axis : {0, 1, 2}) {
        EXPECT_EQ(part.getOrigin(axis), 10 + axis);
        EXPECT_EQ(image.getSpacing(axis), 2 + axis);
    }
    EXPECT_EQ(image.getOrigin(0), 10 + 2 * 3) << "two voxels of 3 against x of the world";

    seenAsFloat.setBackgroundValue(7);
    EXPECT_EQ(image.getBackgroundValue(), 7);
    EXPECT_THROW(image.setOrigin(0, HUGE_VAL), RuntimeError);
    const ImageModel& constant = image;
    ImageModelAdapter readOnly(&constant, VoxelTypes::float32, DataConvertionTypes::cast);
    EXPECT_EQ(messageOf<RuntimeError>([&] { readOnly.enforceSameCharacteristics(&other, 1); }),
              "a read-only view of an image cannot change it");
}

TEST(TemporaryImageTest, KeepsItsModelThroughEachReserve) {
    const RefImpl<TemporaryImage> temporary = TemporaryImage::New(LocationMode::hostMemory);
    ImageModel* const model = temporary->getImageModel();
    EXPECT_EQ(model->getDimension(0), 0U);
    temporary->reserve(VoxelTypes::float32, 4, 3, 2, 1, 1);
    const float one = 1;
    ASSERT_TRUE(model->writeRow(1, &one, 3, 2, 1, 0, 0));
    model->setSpacing(0, 5);
    // Who is given the model as its output can size it too.
    dynamic_cast<ResizableImage&>(*model).reserve(VoxelTypes::float32, {2, 2});
    EXPECT_EQ(temporary->getImageModel(), model);
    EXPECT_EQ(test::readAll<float>(*model), std::vector<float>(4));
    EXPECT_EQ(model->getSpacing(0), 1);
    EXPECT_THROW(temporary->reserve(VoxelTypes::float32, std::size_t{1} << 60, 1, 1, 1, 1), RuntimeError);
    EXPECT_EQ(model->getDimension(0), 0U) << "an image that could not be had is empty";
    EXPECT_THROW(TemporaryImage::New(static_cast<LocationMode>(2)), RuntimeError);
}
