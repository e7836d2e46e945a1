#include "ImageFiles/VoxelRounding.h"

#include <cmath>
#include <complex>

#include "Messages.h"
#include "TestImages.h"

namespace zel::test {

namespace {

template <typename To, typename From>
std::vector<To> converted(std::vector<From> values) {
    const HostImage image(voxelTypeOf<From>, {values.size(), 1}, values.data());
    return readAll<To>(tool::convertVoxels(image, voxelTypeOf<To>));
}

}  // namespace

TEST(VoxelRoundingTest, FloatsGoToTheNearestInteger) {
    const double nan = std::nan(""), infinity = std::numeric_limits<double>::infinity();
    const std::vector<double> values{0.5,   1.5, 2.5,  -0.5,     -1.5,      -2.5, 254.4, 254.5,
                                     255.5, 300, -300, infinity, -infinity, nan,  1e300, 127.5};
    EXPECT_EQ(converted<std::uint8_t>(values),
              (std::vector<std::uint8_t>{0, 2, 2, 0, 0, 0, 254, 254, 255, 255, 0, 255, 0, 0, 255, 128}));
    EXPECT_EQ(converted<std::int8_t>(values),
              (std::vector<std::int8_t>{0, 2, 2, 0, -2, -2, 127, 127, 127, 127, -128, 127, -128, 0, 127, 127}));
}

// A double cannot hold the largest 64-bit integers, so a comparison with them would round.
TEST(VoxelRoundingTest, NumbersSaturateAtTheBoundsOfTheirType) {
    const std::vector<double> values{9223372036854774784.0, -9223372036854775808.0, -1e19, 1e19,
                                     18446744073709551615.0};
    EXPECT_EQ(converted<std::int64_t>(values),
              (std::vector<std::int64_t>{9223372036854774784, INT64_MIN, INT64_MIN, INT64_MAX, INT64_MAX}));
    EXPECT_EQ(converted<std::uint64_t>(values),
              (std::vector<std::uint64_t>{9223372036854774784U, 0, 0, 10000000000000000000U, UINT64_MAX}));
    EXPECT_EQ(converted<std::int64_t>(std::vector<double>{9223372036854775807.0}),
              (std::vector<std::int64_t>{INT64_MAX}));
    EXPECT_EQ((converted<std::uint16_t, std::int64_t>({-1, 0, 65535, 65536, INT64_MIN, INT64_MAX})),
              (std::vector<std::uint16_t>{0, 0, 65535, 65535, 0, 65535}));
    EXPECT_EQ((converted<std::int64_t, std::uint64_t>({5, UINT64_MAX})), (std::vector<std::int64_t>{5, INT64_MAX}));
}

// From any type to any other and back nothing is lost; complex numbers stay complex.
TEST(VoxelRoundingTest, SmallNumbersSurviveEveryPairOfTypes) {
    const std::vector<std::uint8_t> values{0, 1, 2, 100, 127};
    for (const VoxelTypes type : allVoxelTypes) {
        visitVoxelType(type, RealTypes{}, [&]<typename T>() {
            const std::vector<T> typed = converted<T>(values);
            for (const VoxelTypes other : allVoxelTypes) {
                visitVoxelType(other, RealTypes{}, [&]<typename To>() {
                    EXPECT_EQ(converted<std::uint8_t>(converted<To>(typed)), values);
                });
            }
            EXPECT_EQ(converted<std::complex<double>>(typed), (std::vector<std::complex<double>>{0, 1, 2, 100, 127}));
            const std::vector<std::complex<float>> complex{0, 1, 2, 100, 127};
            EXPECT_EQ(converted<std::complex<float>>(converted<std::complex<double>>(complex)), complex);
            EXPECT_EQ(messageOf<std::runtime_error>([&] { converted<T>(complex); }),
                      "complex numbers do not convert to " + std::string(voxelTypeName(type)));
        });
    }
}

}  // namespace zel::test
