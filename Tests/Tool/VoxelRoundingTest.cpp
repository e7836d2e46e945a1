#include "ImageFiles/VoxelRounding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

#include "Messages.h"
#include "TestImages.h"

namespace zel::test {

namespace {

template <typename From, typename To>
std::vector<To> converted(VoxelTypes from, std::vector<From> values, VoxelTypes to) {
    const HostImage image(from, {values.size(), 1}, values.data());
    return readAll<To>(tool::convertVoxels(image, to));
}

}  // namespace

TEST(VoxelRoundingTest, FloatsGoToTheNearestInteger) {
    const double nan = std::nan(""), infinity = std::numeric_limits<double>::infinity();
    const std::vector<double> values{0.5,   1.5, 2.5,  -0.5,     -1.5,      -2.5, 254.4, 254.5,
                                     255.5, 300, -300, infinity, -infinity, nan,  1e300, 127.5};
    EXPECT_EQ((converted<double, std::uint8_t>(VoxelTypes::float64, values, VoxelTypes::uint8)),
              (std::vector<std::uint8_t>{0, 2, 2, 0, 0, 0, 254, 254, 255, 255, 0, 255, 0, 0, 255, 128}));
    EXPECT_EQ((converted<double, std::int8_t>(VoxelTypes::float64, values, VoxelTypes::int8)),
              (std::vector<std::int8_t>{0, 2, 2, 0, -2, -2, 127, 127, 127, 127, -128, 127, -128, 0, 127, 127}));
}

// The bounds of 64-bit integers are not numbers of double, where a comparison with them would round.
TEST(VoxelRoundingTest, TheBoundsOf64Bits) {
    const std::vector<double> values{9223372036854775807.0,  9223372036854774784.0, -9223372036854775808.0, -1e19, 1e19,
                                     18446744073709549568.0, 18446744073709551615.0};
    EXPECT_EQ((converted<double, std::int64_t>(VoxelTypes::float64, values, VoxelTypes::int64)),
              (std::vector<std::int64_t>{INT64_MAX, 9223372036854774784, INT64_MIN, INT64_MIN, INT64_MAX, INT64_MAX,
                                         INT64_MAX}));
    EXPECT_EQ((converted<double, std::uint64_t>(VoxelTypes::float64, values, VoxelTypes::uint64)),
              (std::vector<std::uint64_t>{9223372036854775808U, 9223372036854774784U, 0, 0, 10000000000000000000U,
                                          18446744073709549568U, UINT64_MAX}));
}

TEST(VoxelRoundingTest, IntegersSaturate) {
    EXPECT_EQ((converted<std::int64_t, std::uint16_t>(VoxelTypes::int64, {-1, 0, 65535, 65536, INT64_MIN, INT64_MAX},
                                                      VoxelTypes::uint16)),
              (std::vector<std::uint16_t>{0, 0, 65535, 65535, 0, 65535}));
    EXPECT_EQ((converted<std::uint64_t, std::int64_t>(VoxelTypes::uint64, {5, UINT64_MAX}, VoxelTypes::int64)),
              (std::vector<std::int64_t>{5, INT64_MAX}));
}

TEST(VoxelRoundingTest, ComplexNumbersStayComplex) {
    using Complex = std::complex<double>;
    EXPECT_EQ((converted<float, Complex>(VoxelTypes::float32, {1.5F}, VoxelTypes::complex128)),
              (std::vector<Complex>{{1.5, 0}}));
    const HostImage image(VoxelTypes::complex64, {2, 2});
    EXPECT_EQ(messageOf<std::runtime_error>([&] { tool::convertVoxels(image, VoxelTypes::float64); }),
              "complex numbers do not convert to float64");
}

// From any type to any wider one and back nothing is lost; every pair of types is reached.
TEST(VoxelRoundingTest, SmallNumbersSurviveEveryPair) {
    std::vector<std::uint8_t> values{0, 1, 2, 100, 127};
    const HostImage original(VoxelTypes::uint8, {5, 1}, values.data());
    for (const VoxelTypes first : allVoxelTypes) {
        for (const VoxelTypes second : allVoxelTypes) {
            const bool isComplex = first >= VoxelTypes::complex64 || second >= VoxelTypes::complex64;
            if (isComplex && second < VoxelTypes::complex64) continue;
            const HostImage there = tool::convertVoxels(tool::convertVoxels(original, first), second);
            if (isComplex) {
                EXPECT_EQ(there.getDataType(), second);
                continue;
            }
            EXPECT_EQ(readAll<std::uint8_t>(tool::convertVoxels(there, VoxelTypes::uint8)), values);
        }
    }
}

}  // namespace zel::test
