#include "Kernels/ConvertImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "DeviceVectors.h"
#include "Kernels/RowLaunch.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

/// One row through the kernel.
template <typename To, RoundMode mode, typename From>
std::vector<To> convertRow(const std::vector<From>& values) {
    const auto src = toDevice(values);
    const auto dst = toDevice(std::vector<To>(values.size()));
    void (*const kernel)(const From*, unsigned long long, To*, unsigned long long, unsigned long long) =
        convertImage2dKernel<From, To, mode>;
    launchRowsPerSlice(1, 1, nullptr, [&](const cudaLaunchConfig_t& config, std::uint64_t) {
        cudaLaunchKernelEx(&config, kernel, static_cast<const From*>(src.get()), 0ULL, static_cast<To*>(dst.get()),
                           0ULL, static_cast<unsigned long long>(values.size()));
    });
    return toHost<To>(dst, values.size());
}

template <typename From>
const std::vector<From> halves{From(-2.5), From(-1.5), From(-0.5), From(-0.25),
                               From(0.5),  From(1.5),  From(2.5),  From(2.75)};

template <typename From>
void expectEveryRoundMode() {
    using Expected = std::vector<std::int16_t>;
    EXPECT_EQ((convertRow<std::int16_t, RoundMode::NearestEven>(halves<From>)), (Expected{-2, -2, 0, 0, 0, 2, 2, 3}));
    EXPECT_EQ((convertRow<std::int16_t, RoundMode::HalfUp>(halves<From>)), (Expected{-2, -1, 0, 0, 1, 2, 3, 3}));
    EXPECT_EQ((convertRow<std::int16_t, RoundMode::TowardZero>(halves<From>)), (Expected{-2, -1, 0, 0, 0, 1, 2, 2}));
    EXPECT_EQ((convertRow<std::int16_t, RoundMode::Up>(halves<From>)), (Expected{-2, -1, 0, 0, 1, 2, 3, 3}));
    EXPECT_EQ((convertRow<std::int16_t, RoundMode::Down>(halves<From>)), (Expected{-3, -2, -1, -1, 0, 1, 2, 2}));
}

/// Every integer pair converts as a C cast does, under any mode.
template <typename From, typename... To>
void expectCasts() {
    using Limits = std::numeric_limits<From>;
    std::vector<From> values{0, 1, 2, 100, Limits::max(), Limits::min(), static_cast<From>(Limits::max() / 2 + 1)};
    for (int i = 0; i < 500; ++i) values.push_back(static_cast<From>(i * 2654435761U));
    const auto expectCast = [&](auto example) {
        using T = decltype(example);
        std::vector<T> expected(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) expected[i] = static_cast<T>(values[i]);
        EXPECT_EQ((convertRow<T, RoundMode::NearestEven>(values)), expected);
        EXPECT_EQ((convertRow<T, RoundMode::Up>(values)), expected);
    };
    (expectCast(To{}), ...);
}

}  // namespace

TEST(ConvertImageTest, RoundsFloatsByTheMode) {
    expectEveryRoundMode<float>();
    expectEveryRoundMode<double>();
    // 0.5 is added in the source's own precision: in float the sum rounds up to 1.
    EXPECT_EQ((convertRow<std::int32_t, RoundMode::HalfUp>(std::vector{0.49999997F})), (std::vector{1}));
    EXPECT_EQ((convertRow<std::int32_t, RoundMode::HalfUp>(std::vector{0.49999997})), (std::vector{0}));
}

TEST(ConvertImageTest, KeepsLowBitsAndSaturatesAt32Bits) {
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ((convertRow<std::uint8_t, RoundMode::HalfUp>(std::vector{2.5F, 255.5F, 300.0F, -1.0F, inf, nan})),
              (std::vector<std::uint8_t>{3, 0, 44, 0, 255, 0}));
    EXPECT_EQ((convertRow<std::int32_t, RoundMode::Down>(std::vector{inf, -inf, nan, 2147483520.0F})),
              (std::vector{2147483647, -2147483647 - 1, 0, 2147483520}));
    EXPECT_EQ((convertRow<std::uint32_t, RoundMode::NearestEven>(std::vector{4294967295.5, 4294967294.5, -0.5})),
              (std::vector<std::uint32_t>{4294967295U, 4294967294U, 0U}));
    EXPECT_EQ((convertRow<std::int8_t, RoundMode::TowardZero>(std::vector{-129.9, 128.0})),
              (std::vector<std::int8_t>{127, -128}));
}

TEST(ConvertImageTest, CastsIntegersToEveryOtherType) {
    using u8 = std::uint8_t;
    using u16 = std::uint16_t;
    using u32 = std::uint32_t;
    using s8 = std::int8_t;
    using s16 = std::int16_t;
    using s32 = std::int32_t;
    expectCasts<u8, u16, u32, s8, s16, s32, float, double>();
    expectCasts<u16, u8, u32, s8, s16, s32, float, double>();
    expectCasts<u32, u8, u16, s8, s16, s32, float, double>();
    expectCasts<s8, u8, u16, u32, s16, s32, float, double>();
    expectCasts<s16, u8, u16, u32, s8, s32, float, double>();
    expectCasts<s32, u8, u16, u32, s8, s16, float, double>();
}

TEST(ConvertImageTest, MakesComplexPixels) {
    const std::vector<float2> fromReal = convertRow<float2, RoundMode::TowardZero>(std::vector{1.0 + 1e-9, -3.0});
    EXPECT_EQ(fromReal[0].x, 1.0F);
    EXPECT_EQ(fromReal[1].x, -3.0F);
    EXPECT_EQ(fromReal[1].y, 0.0F);
    const std::vector<double2> wide = convertRow<double2, RoundMode::TowardZero>(std::vector{float2{1.5F, -2.5F}});
    EXPECT_EQ(wide[0].x, 1.5);
    EXPECT_EQ(wide[0].y, -2.5);
    const std::vector<float2> narrow = convertRow<float2, RoundMode::TowardZero>(std::vector{double2{0.1, 16777217}});
    EXPECT_EQ(narrow[0].x, 0.1F);
    EXPECT_EQ(narrow[0].y, 16777216.0F);
}

namespace {

constexpr std::size_t rowLength = 70, rowCount = 3, sliceCount = 2;

/// Converts a volume of rows of 65 pixels, each image with a padding of its own, and gives the whole destination.
template <typename From, typename To>
std::vector<To> convertVolume(RoundMode mode, std::size_t depth) {
    std::vector<From> source((rowLength + 6) * rowCount * sliceCount);
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<From>(i % 251);
    const auto src = toDevice(source);
    const auto dst = toDevice(std::vector<To>(rowLength * rowCount * sliceCount, To(-1)));
    convertImage(static_cast<const From*>(src.get()), (rowLength + 6) * sizeof(From),
                 (rowLength + 6) * rowCount * sizeof(From), static_cast<To*>(dst.get()), rowLength * sizeof(To),
                 rowLength * rowCount * sizeof(To), 65, rowCount, depth, mode, nullptr);
    return toHost<To>(dst, rowLength * rowCount * sliceCount);
}

template <typename From, typename To>
void expectVolume(RoundMode mode) {
    std::vector<To> expected(rowLength * rowCount * sliceCount, To(-1));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const std::size_t row = i / rowLength, x = i % rowLength;
        if (x < 65) expected[i] = static_cast<To>((row * (rowLength + 6) + x) % 251);
    }
    EXPECT_EQ((convertVolume<From, To>(mode, sliceCount)), expected);
}

}  // namespace

TEST(ConvertImageTest, WalksBothImagesByTheirOwnPitches) {
    expectVolume<std::uint16_t, float>(RoundMode::NearestEven);
    expectVolume<std::uint32_t, double>(RoundMode::Down);
    expectVolume<double, float>(RoundMode::HalfUp);
    expectVolume<float, float>(RoundMode::Up);
}

TEST(ConvertImageTest, DoesNothingForADepthOfZeroOrAnUnknownMode) {
    const std::vector<float> untouched(rowLength * rowCount * sliceCount, -1);
    EXPECT_EQ((convertVolume<std::uint8_t, float>(RoundMode::Up, 0)), untouched);
    EXPECT_EQ((convertVolume<std::uint8_t, float>(static_cast<RoundMode>(5), sliceCount)), untouched);
    EXPECT_EQ((convertVolume<float, float>(static_cast<RoundMode>(5), sliceCount)), untouched);
}
