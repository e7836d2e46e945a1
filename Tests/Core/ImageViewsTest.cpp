#include <cmath>
#include <complex>
#include <numeric>

#include "Messages.h"
#include "TestImages.h"
#include "zel/ImageModelAdapter.h"

using namespace zel;
using namespace zel::test;

namespace {

/// 0, 1, 2 and so on, x fastest.
HostImage countingImage(const ImageSize& size) {
    HostImage image(VoxelTypes::int32, size);
    auto* const first = voxels<std::int32_t>(image);
    std::iota(first, first + image.extentBytes() / sizeof(std::int32_t), 0);
    return image;
}

ImageModelAdapter seenAs(VoxelTypes type, HostImage& image) {
    return {&image, type, DataConvertionTypes::cast};
}

template <typename From, typename To>
void expectConverted(std::vector<From> values, const std::vector<To>& expected) {
    HostImage image(voxelTypeOf<From>, {values.size()}, values.data());
    EXPECT_EQ(readAll<To>(seenAs(voxelTypeOf<To>, image)), expected);
}

}  // namespace

TEST(ImageModelSizeProxyTest, ShowsAPartOfAPart) {
    HostImage image = countingImage({10, 8, 3});
    ImageModelSizeProxy outer = partOf(image, {2, 1, 1}, {6, 5, 2});
    ImageModelSizeProxy inner = partOf(outer, {3, 2, 1}, {2, 2, 1});
    const int first = (2 * 8 + 3) * 10 + 5;  // (5, 3, 2) of the image
    EXPECT_EQ(readAll<std::int32_t>(inner), (std::vector<std::int32_t>{first, first + 1, first + 10, first + 11}));

    const std::int32_t value = -1;
    ASSERT_TRUE(inner.writeRow(1, &value, 1, 1, 0, 0, 0));
    EXPECT_EQ(voxels<std::int32_t>(image)[first + 11], -1);
    EXPECT_FALSE(inner.writeRow(2, &value, 1, 0, 0, 0, 0)) << "inside the image, but outside the part";
    std::array<std::size_t, 5> origin{};
    inner.proxyOrigin(origin);
    EXPECT_EQ(origin, (std::array<std::size_t, 5>{3, 2, 1, 0, 0}));
}

TEST(ImageModelSizeProxyTest, HasHostDataExactlyWhenItsPartHasNoGaps) {
    HostImage image = countingImage({10, 8, 3, 2});
    const auto firstVoxel = [&](const std::array<std::size_t, 5>& origin, const ImageSize& size) {
        const void* const data = partOf(image, origin, size).hostDataReadOnly();
        return data == nullptr ? -1 : *static_cast<const std::int32_t*>(data);
    };
    EXPECT_EQ(firstVoxel({}, {10, 8, 3, 2}), 0);
    EXPECT_EQ(firstVoxel({0, 2, 1, 1}, {10, 3}), ((3 + 1) * 8 + 2) * 10) << "whole rows of one slice";
    EXPECT_EQ(firstVoxel({0, 0, 1}, {10, 8, 2}), 80) << "whole slices";
    EXPECT_EQ(firstVoxel({4, 5, 2}, {3}), (2 * 8 + 5) * 10 + 4) << "a piece of one row";
    EXPECT_EQ(firstVoxel({0, 2}, {10, 3, 2}), -1);
    EXPECT_EQ(firstVoxel({1}, {9, 8}), -1);
    EXPECT_EQ(firstVoxel({}, {10, 8, 2, 2}), -1);
}

TEST(ImageModelSizeProxyTest, RefusesBoxesOutsideAndWritesToConstImages) {
    const HostImage image = countingImage({4, 4});
    const auto takeTooMuch = [&] { partOf(image, {0, 3}, {4, 2}); };
    EXPECT_EQ(messageOf(takeTooMuch), "a part of 2 elements from 3 on along axis 1 does not lie in an image of 4");
    EXPECT_THROW(partOf(image, {SIZE_MAX}, {2}), RuntimeError);
    ImageModelSizeProxy readOnly = partOf(image, {}, {4, 4});
    const std::int32_t value = 0;
    EXPECT_FALSE(readOnly.writeRow(1, &value, 0, 0, 0, 0, 0));
    EXPECT_EQ(readOnly.hostDataWritable(), nullptr);
    EXPECT_THROW(readOnly.setSpacing(0, 1), RuntimeError);
}

TEST(ImageModelAdapterTest, ConvertsAsDocumented) {
    const float nan = std::nanf("");
    expectConverted<float, std::uint8_t>({2.9F, 300.0F, -1.5F, nan, 1e20F}, {2, 44, 0, 0, 255});
    expectConverted<float, std::int8_t>({-2.9F, 130.0F}, {-2, -126});
    expectConverted<double, std::int16_t>({70000.7, -3e9, nan}, {4464, 0, 0});
    expectConverted<double, std::uint32_t>({4294967295.9, -0.9, 5e9}, {4294967295U, 0, 4294967295U});
    expectConverted<float, std::int64_t>({1e19F, 3e9F}, {INT64_MAX, 3000000000});
    expectConverted<std::int32_t, std::uint8_t>({-1, 256, 511}, {255, 0, 255});
    expectConverted<std::uint32_t, float>({16777217, 4294967295U}, {16777216.0F, 4294967296.0F});
    expectConverted<std::int8_t, double>({-128, 127}, {-128, 127});
    expectConverted<std::uint32_t, std::complex<double>>({4294967295U}, {4294967295.0});
}

TEST(ImageModelAdapterTest, ReadsAndWritesLongRowsInPieces) {
    HostImage image = randomImage<std::uint16_t>({20000, 2}, 5);
    const std::vector<std::uint16_t> before = readAll<std::uint16_t>(image);
    const auto expected = before.begin() + 20000 + 7;
    ImageModelAdapter adapter = seenAs(VoxelTypes::float64, image);
    std::vector<double> row(19990);
    ASSERT_TRUE(adapter.readRow(row.size(), row.data(), 7, 1, 0, 0, 0));
    EXPECT_TRUE(std::equal(row.begin(), row.end(), expected));
    ASSERT_TRUE(adapter.writeRow(row.size(), row.data(), 10, 0, 0, 0, 0));
    EXPECT_TRUE(std::equal(row.begin(), row.end(), voxels<std::uint16_t>(image) + 10));
    EXPECT_FALSE(adapter.readRow(2, row.data(), 19999, 0, 0, 0, 0));
    EXPECT_EQ(adapter.hostDataReadOnly(), nullptr);
}

TEST(ImageModelAdapterTest, ReadsRealImagesAsComplexOnesButNotTheOtherWayRound) {
    HostImage image = randomImage<std::int16_t>({3000}, 6), complex(VoxelTypes::complex64, {2});
    const std::vector<std::int16_t> real = readAll<std::int16_t>(image);
    ImageModelAdapter asComplex = seenAs(VoxelTypes::complex64, image);
    EXPECT_EQ(readAll<std::complex<float>>(asComplex), std::vector<std::complex<float>>(real.begin(), real.end()));
    const std::complex<double> value;
    EXPECT_FALSE(asComplex.writeRow(1, &value, 0, 0, 0, 0, 0));
    EXPECT_EQ(messageOf([&] { seenAs(VoxelTypes::float32, complex); }),
              "an image of complex64 cannot be seen as float32");
    EXPECT_NO_THROW(seenAs(VoxelTypes::complex64, complex));
    const ImageModel& constant = complex;
    ImageModelAdapter readOnly(&constant, VoxelTypes::complex64, DataConvertionTypes::cast);
    EXPECT_FALSE(readOnly.writeRow(1, &value, 0, 0, 0, 0, 0));
}
