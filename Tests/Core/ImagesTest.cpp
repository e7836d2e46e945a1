#include <cmath>

#include "Messages.h"
#include "TestImages.h"
#include "zel/ImageModelAdapter.h"
#include "zel/TarnwayImage.h"
#include "zel/TemporaryImage.h"

using namespace zel;
using namespace zel::test;
using testing::HasSubstr;

TEST(HostImageTest, OwnsZeroedVoxelsOfEveryType) {
    for (const VoxelTypes type : allVoxelTypes) {
        HostImage image(type, {5, 4, 3, 2, 2});
        EXPECT_EQ(image.extentBytes(), 240 * helper::getSizeOf(type));
        EXPECT_EQ(std::count(voxels<char>(image), voxels<char>(image) + image.extentBytes(), 0), image.extentBytes());
        EXPECT_EQ(voxelTypeFromName(voxelTypeName(type)), type);
    }
    EXPECT_EQ(voxelTypeFromName("half"), std::nullopt);
    EXPECT_THROW(helper::getSizeOf(static_cast<VoxelTypes>(12)), UnexpectedError);
}

TEST(HostImageTest, ReadsAndWritesRowsWhereTheyLie) {
    HostImage image(VoxelTypes::uint16, {4, 3, 2, 2, 2});
    const std::uint16_t written[] = {7, 8};
    ASSERT_TRUE(image.writeRow(2, written, 1, 2, 1, 0, 1));
    const std::size_t position = (((1 * 2 + 0) * 2 + 1) * 3 + 2) * 4 + 1;  // x fastest
    EXPECT_TRUE(std::equal(written, written + 2, voxels<std::uint16_t>(image) + position));
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
    HostImage image(VoxelTypes::uint8, {3, 2}, memory, 4), packed(VoxelTypes::uint8, {7}, memory);
    EXPECT_EQ(readAll<std::uint8_t>(image), (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(image.hostDataReadOnly(), nullptr) << "rows with gaps are no contiguous data";
    EXPECT_EQ(image.extentBytes(), sizeof memory);
    EXPECT_EQ(packed.hostDataWritable(), memory);
}

TEST(HostImageTest, RefusesWhatCannotBeHad) {
    char memory[8];
    const auto expectRefusal = [](const char* message, auto&&... given) {
        EXPECT_THAT(messageOf([&] { HostImage(given...); }), HasSubstr(message));
    };
    const char* const uncountable = "more bytes than this machine can count";
    expectRefusal(uncountable, VoxelTypes::float64, ImageSize{SIZE_MAX / 8, 2});
    expectRefusal(uncountable, VoxelTypes::uint8, ImageSize{1, SIZE_MAX / 4}, memory, 8);
    expectRefusal("cannot allocate 1152921504606846976 bytes", VoxelTypes::uint8, ImageSize{std::size_t{1} << 60});
    expectRefusal("a row pitch of 5 bytes is too small for rows of 6 bytes", VoxelTypes::uint16, ImageSize{3, 2},
                  memory, 5);
}

TEST(LocatedImageTest, KeepsItsSpacingWhenToldABadOne) {
    HostImage image(VoxelTypes::uint8, {1});
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) EXPECT_THROW(image.setSpacing(0, bad), RuntimeError);
    EXPECT_EQ(image.getSpacing(0), 1);
    EXPECT_THROW(image.setOrigin(0, HUGE_VAL), RuntimeError);
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
    HostImage other(VoxelTypes::uint8, {2, 2, 2}), image(VoxelTypes::uint8, {4, 4, 4});
    for (const int axis : {0, 1, 2}) {
        other.setOrigin(axis, 10.0 + axis);
        other.setSpacing(axis, 2.0 + axis);
    }
    using Axis = tarnway::Vector<double, 3>;
    const ImageModel::Orientation turned = {Axis(0, 1, 0), Axis(-1, 0, 0), Axis(0, 0, 1)};
    other.setOrientation(turned);

    // A part takes the place itself; the image behind it moves along.
    ImageModelSizeProxy part = partOf(image, {1, 2, 3}, {2, 2, 1});
    ImageModelAdapter seenAsFloat(&part, VoxelTypes::float32, DataConvertionTypes::cast);
    seenAsFloat.enforceSameCharacteristics(&other, 4);
    ImageModel::Orientation orientation;
    image.getOrientation(orientation);
    EXPECT_EQ(orientation, turned);
    // One voxel of 2 along y of the world, two of 3 against x, three of 4 along z.
    constexpr double firstOfImage[] = {10 + 2 * 3, 11 - 1 * 2, 12 - 3 * 4};
    for (const int axis : {0, 1, 2}) {
        EXPECT_EQ(image.getSpacing(axis), 2 + axis);
        EXPECT_EQ(image.getOrigin(axis), firstOfImage[axis]);
        EXPECT_EQ(part.getOrigin(axis), 10 + axis);
    }

    seenAsFloat.setBackgroundValue(7);
    EXPECT_EQ(image.getBackgroundValue(), 7);
    const ImageModel& constant = image;
    ImageModelAdapter readOnly(&constant, VoxelTypes::float32, DataConvertionTypes::cast);
    EXPECT_EQ(messageOf([&] { readOnly.enforceSameCharacteristics(&other, 1); }),
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
    EXPECT_EQ(readAll<float>(*model), std::vector<float>(4));
    EXPECT_EQ(model->getSpacing(0), 1);
    EXPECT_THROW(temporary->reserve(VoxelTypes::float32, std::size_t{1} << 60, 1, 1, 1, 1), RuntimeError);
    EXPECT_EQ(model->getDimension(0), 0U) << "an image that could not be had is empty";
    EXPECT_THROW(TemporaryImage::New(static_cast<LocationMode>(2)), RuntimeError);
}
