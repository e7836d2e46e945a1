#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>

#include "Messages.h"
#include "TestImages.h"
#include "zel/ImageModelAdapter.h"
#include "zel/ImageModelSizeProxy.h"

using namespace zel;
using test::messageOf;
using test::readAll;

namespace {

/// 0, 1, 2 and so on, x fastest.
HostImage countingImage(const ImageSize& size) {
    HostImage image(VoxelTypes::int32, size);
    const std::size_t count = image.extentBytes() / sizeof(std::int32_t);
    for (std::size_t i = 0; i < count; ++i) test::voxels<std::int32_t>(image)[i] = static_cast<std::int32_t>(i);
    return image;
}

template <typename From, typename To>
std::vector<To> converted(std::vector<From> values) {
    HostImage image(voxelTypeOf<From>, {values.size()}, values.data());
    return readAll<To>(ImageModelAdapter(&image, voxelTypeOf<To>, DataConvertionTypes::cast));
}

}  // namespace

TEST(ImageModelSizeProxyTest, ShowsAPartOfAPart) {
    HostImage image = countingImage({10, 8, 3});
    ImageModelSizeProxy outer(&image, 2, 6, 1, 5, 1, 2, 0, 1, 0, 1);
    ImageModelSizeProxy inner(&outer, 3, 2, 2, 2, 1, 1, 0, 1, 0, 1);
    // Position (5, 3, 2) of the image.
    const int first = (2 * 8 + 3) * 10 + 5;
    EXPECT_EQ(readAll<std::int32_t>(inner), (std::vector<std::int32_t>{first, first + 1, first + 10, first + 11}));

    const std::int32_t value = -1;
    ASSERT_TRUE(inner.writeRow(1, &value, 1, 1, 0, 0, 0));
    EXPECT_EQ(test::voxels<std::int32_t>(image)[first + 11], -1);
    EXPECT_FALSE(inner.writeRow(2, &value, 1, 0, 0, 0, 0)) << "inside the image, but outside the part";
    std::array<std::size_t, 5> origin{};
    inner.proxyOrigin(origin);
    EXPECT_EQ(origin, (std::array<std::size_t, 5>{3, 2, 1, 0, 0}));
}

TEST(ImageModelSizeProxyTest, HasHostDataExactlyWhenItsPartHasNoGaps) {
    HostImage image = countingImage({10, 8, 3, 2});
    const auto* const data = static_cast<const std::int32_t*>(image.hostDataReadOnly());
    const auto partData = [&](std::size_t x, std::size_t nx, std::size_t y, std::size_t ny, std::size_t z,
                              std::size_t nz, std::size_t i3, std::size_t n3) {
        return static_cast<const std::int32_t*>(
            ImageModelSizeProxy(&image, x, nx, y, ny, z, nz, i3, n3, 0, 1).hostDataReadOnly());
    };
    EXPECT_EQ(partData(0, 10, 0, 8, 0, 3, 0, 2), data);
    EXPECT_EQ(partData(0, 10, 2, 3, 1, 1, 1, 1), data + ((3 + 1) * 8 + 2) * 10) << "whole rows of one slice";
    EXPECT_EQ(partData(0, 10, 0, 8, 1, 2, 0, 1), data + 80) << "whole slices";
    EXPECT_EQ(partData(4, 3, 5, 1, 2, 1, 0, 1), data + (2 * 8 + 5) * 10 + 4) << "a piece of one row";
    EXPECT_EQ(partData(0, 10, 2, 3, 0, 2, 0, 1), nullptr);
    EXPECT_EQ(partData(1, 9, 0, 8, 0, 1, 0, 1), nullptr);
    EXPECT_EQ(partData(0, 10, 0, 8, 0, 2, 0, 2), nullptr);
}

TEST(ImageModelSizeProxyTest, RefusesBoxesOutsideAndWritesToConstImages) {
    const HostImage image = countingImage({4, 4});
    EXPECT_EQ(messageOf<RuntimeError>([&] { ImageModelSizeProxy(&image, 0, 4, 3, 2, 0, 1, 0, 1, 0, 1); }),
              "a part of 2 elements from 3 on along axis 1 does not lie in an image of 4");
    EXPECT_THROW(ImageModelSizeProxy(&image, SIZE_MAX, 2, 0, 1, 0, 1, 0, 1, 0, 1), RuntimeError);
    ImageModelSizeProxy readOnly(&image, 0, 4, 0, 4, 0, 1, 0, 1, 0, 1);
    const std::int32_t value = 0;
    EXPECT_FALSE(readOnly.writeRow(1, &value, 0, 0, 0, 0, 0));
    EXPECT_EQ(readOnly.hostDataWritable(), nullptr);
    EXPECT_THROW(readOnly.setSpacing(0, 1), RuntimeError);
}

TEST(ImageModelSizeProxyTest, LiesWhereItsFirstVoxelLies) {
    HostImage image = countingImage({4, 4, 4});
    image.setOrigin(0, 100);
    image.setSpacing(1, 2);
    // x of the image runs along y of the world, and y against x.
    image.setOrientation({tarnway::Vector<double, 3>(0, 1, 0), tarnway::Vector<double, 3>(-1, 0, 0),
                          tarnway::Vector<double, 3>(0, 0, 1)});
    const ImageModelSizeProxy part(&image, 3, 1, 2, 1, 1, 1, 0, 1, 0, 1);
    EXPECT_EQ(part.getOrigin(0), 100 - 2 * 2);
    EXPECT_EQ(part.getOrigin(1), 3);
    EXPECT_EQ(part.getOrigin(2), 1);
}

TEST(ImageModelAdapterTest, ConvertsAsDocumented) {
    const float nan = std::nanf("");
    EXPECT_EQ((converted<float, std::uint8_t>({2.9F, 300.0F, -1.5F, nan, 1e20F})),
              (std::vector<std::uint8_t>{2, 44, 0, 0, 255}));
    EXPECT_EQ((converted<float, std::int8_t>({-2.9F, 130.0F})), (std::vector<std::int8_t>{-2, -126}));
    EXPECT_EQ((converted<double, std::int16_t>({70000.7, -3e9, nan})), (std::vector<std::int16_t>{4464, 0, 0}));
    EXPECT_EQ((converted<double, std::uint32_t>({4294967295.9, -0.9, 5e9})),
              (std::vector<std::uint32_t>{4294967295U, 0, 4294967295U}));
    EXPECT_EQ((converted<float, std::int64_t>({1e19F, 3e9F})), (std::vector<std::int64_t>{INT64_MAX, 3000000000}));
    EXPECT_EQ((converted<std::int32_t, std::uint8_t>({-1, 256, 511})), (std::vector<std::uint8_t>{255, 0, 255}));
    EXPECT_EQ((converted<std::uint32_t, float>({16777217, 4294967295U})),
              (std::vector<float>{16777216.0F, 4294967296.0F}));
    EXPECT_EQ((converted<std::int8_t, double>({-128, 127})), (std::vector<double>{-128, 127}));
}

TEST(ImageModelAdapterTest, ReadsAndWritesLongRowsInPieces) {
    HostImage image = test::randomImage<std::uint16_t>({20000, 2}, 5);
    const std::vector<std::uint16_t> before = readAll<std::uint16_t>(image);
    ImageModelAdapter adapter(&image, VoxelTypes::float64, DataConvertionTypes::cast);
    std::vector<double> row(19990);
    ASSERT_TRUE(adapter.readRow(row.size(), row.data(), 7, 1, 0, 0, 0));
    for (std::size_t i = 0; i < row.size(); ++i) ASSERT_EQ(row[i], before[20000 + 7 + i]) << i;
    ASSERT_TRUE(adapter.writeRow(row.size(), row.data(), 10, 0, 0, 0, 0));
    for (std::size_t i = 0; i < row.size(); ++i) {
        ASSERT_EQ(test::voxels<std::uint16_t>(image)[10 + i], before[20000 + 7 + i]);
    }
    EXPECT_FALSE(adapter.readRow(2, row.data(), 19999, 0, 0, 0, 0));
    EXPECT_EQ(adapter.hostDataReadOnly(), nullptr);
}

TEST(ImageModelAdapterTest, ReadsRealImagesAsComplexOnes) {
    HostImage image = test::randomImage<std::int16_t>({3000}, 6);
    const std::vector<std::int16_t> real = readAll<std::int16_t>(image);
    ImageModelAdapter asComplex(&image, VoxelTypes::complex64, DataConvertionTypes::cast);
    const auto complex = readAll<std::complex<float>>(asComplex);
    ASSERT_EQ(complex.size(), real.size());
    for (std::size_t i = 0; i < real.size(); ++i) ASSERT_EQ(complex[i], std::complex<float>(real[i], 0)) << i;
    EXPECT_FALSE(asComplex.writeRow(1, complex.data(), 0, 0, 0, 0, 0));
    HostImage wide(VoxelTypes::uint32, {1});
    test::voxels<std::uint32_t>(wide)[0] = 4294967295U;
    EXPECT_EQ(
        readAll<std::complex<double>>(ImageModelAdapter(&wide, VoxelTypes::complex128, DataConvertionTypes::cast)),
        (std::vector<std::complex<double>>{4294967295.0}));
}

TEST(ImageModelAdapterTest, KeepsComplexImagesToThemselves) {
    HostImage image(VoxelTypes::complex64, {2});
    EXPECT_EQ(
        messageOf<RuntimeError>([&] { ImageModelAdapter(&image, VoxelTypes::float32, DataConvertionTypes::cast); }),
        "an image of complex64 cannot be seen as float32");
    EXPECT_NO_THROW(ImageModelAdapter(&image, VoxelTypes::complex64, DataConvertionTypes::cast));
    const ImageModel& readOnly = image;
    ImageModelAdapter adapter(&readOnly, VoxelTypes::complex64, DataConvertionTypes::cast);
    double buffer = 0;
    EXPECT_FALSE(adapter.writeRow(1, &buffer, 0, 0, 0, 0, 0));
}
