#include "Kernels/ConvertImage.h"

#include <climits>

#include "Kernels/RowLaunch.h"
#include "PaddedVolume.h"
#include "zel/VoxelTypes.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// One row through the kernel.
template <typename To, RoundMode mode = RoundMode::TowardZero, typename From>
std::vector<To> convertRow(const std::vector<From>& values) {
    const auto src = toDevice(values);
    const auto dst = toDevice(std::vector<To>(values.size()));
    launchRowsPerSlice(1, 1, nullptr, [&](const cudaLaunchConfig_t& config, std::uint64_t) {
        cudaLaunchKernelEx(&config, convertImage2dKernel<From, To, mode>, src.get(), 0, dst.get(), 0, values.size());
    });
    return toHost(dst, values.size());
}

template <RoundMode mode, typename To, typename From>
void expectRow(const std::vector<From>& values, const std::vector<To>& expected) {
    EXPECT_EQ((convertRow<To, mode>(values)), expected);
}

template <typename From>
void expectEveryRoundMode() {
    using To = std::int16_t;
    const std::vector<From> halves{-2.5, -1.5, -0.5, -0.25, 0.5, 1.5, 2.5, 2.75};
    expectRow<RoundMode::NearestEven, To>(halves, {-2, -2, 0, 0, 0, 2, 2, 3});
    expectRow<RoundMode::HalfUp, To>(halves, {-2, -1, 0, 0, 1, 2, 3, 3});
    expectRow<RoundMode::TowardZero, To>(halves, {-2, -1, 0, 0, 0, 1, 2, 2});
    expectRow<RoundMode::Up, To>(halves, {-2, -1, 0, 0, 1, 2, 3, 3});
    expectRow<RoundMode::Down, To>(halves, {-3, -2, -1, -1, 0, 1, 2, 2});
}

/// Integers convert as a C cast does, under any mode.
template <typename From, typename... To>
void expectCasts(TypeList<To...>) {
    const auto expectCast = []<typename T>(T) {
        if constexpr (std::is_integral_v<From> && !std::is_same_v<From, T>) {
            using Limits = std::numeric_limits<From>;
            const std::vector<From> values{0, 1, 100, Limits::max(), Limits::min(), Limits::max() / 2 + 1, From(~77)};
            const std::vector<T> expected(values.begin(), values.end());
            expectRow<RoundMode::NearestEven>(values, expected);
            expectRow<RoundMode::Up>(values, expected);
        }
    };
    (expectCast(To{}), ...);
}

/// A volume through the launcher, each image with a padding of its own.
template <typename From, typename To>
class ConvertedVolume {
public:
    /// All of the destination.
    std::vector<To> by(RoundMode mode, std::size_t depth = 2) const {
        const auto src = toDevice(from_.elements);
        const auto dst = toDevice(to_.elements);
        convertImage<From, To>(src.get(), from_.pitch(), from_.slicePitch(), dst.get(), to_.pitch(), to_.slicePitch(),
                               from_.size[0], from_.size[1], depth, mode, nullptr);
        return toHost(dst, to_.elements.size());
    }
    std::vector<To> expected() const { return to_.with(from_.plain().voxels); }
    std::vector<To> untouched() const { return to_.elements; }

private:
    PaddedVolume<From> from_ = PaddedVolume<From>::numbered({65, 3, 2}, 11);
    PaddedVolume<To> to_{{65, 3, 2}, 5, To(-1)};
};

}  // namespace

TEST(ConvertImageTest, RoundsFloatsByTheMode) {
    expectEveryRoundMode<float>();
    expectEveryRoundMode<double>();
    // 0.5 is added in the source's own precision: in float the sum rounds up to 1.
    expectRow<RoundMode::HalfUp, std::int32_t, float>({0.49999997F}, {1});
    expectRow<RoundMode::HalfUp, std::int32_t, double>({0.49999997}, {0});
}

TEST(ConvertImageTest, KeepsLowBitsAndSaturatesAt32Bits) {
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    expectRow<RoundMode::HalfUp, std::uint8_t, float>({2.5F, 255.5F, 300, -1, inf, nan}, {3, 0, 44, 0, 255, 0});
    expectRow<RoundMode::Down, std::int32_t, float>({inf, -inf, nan, 2147483520}, {INT_MAX, INT_MIN, 0, 2147483520});
    expectRow<RoundMode::NearestEven, std::uint32_t, double>({4294967295.5, -0.5}, {4294967295U, 0});
    expectRow<RoundMode::TowardZero, std::int8_t, double>({-129.9, 128.0}, {127, -128});
}

TEST(ConvertImageTest, CastsIntegersToEveryOtherType) {
    []<typename... From>(TypeList<From...>) { (expectCasts<From>(KernelTypes{}), ...); }(KernelTypes{});
}

TEST(ConvertImageTest, MakesComplexPixels) {
    const auto parts = [](auto complex) { return std::pair<double, double>(complex.x, complex.y); };
    EXPECT_EQ(parts(convertRow<float2>(std::vector{1.0 + 1e-9, -3.0})[1]), std::pair(-3.0, 0.0));
    EXPECT_EQ(parts(convertRow<double2>(std::vector{float2{1.5F, -2.5F}})[0]), std::pair(1.5, -2.5));
    const double2 wide{0.1, 16777217};
    EXPECT_EQ(parts(convertRow<float2>(std::vector{wide})[0]), (std::pair<double, double>(0.1F, 16777216)));
}

TEST(ConvertImageTest, WalksBothImagesByTheirOwnPitches) {
    const auto expectConverted = [](const auto& volume, RoundMode mode) {
        EXPECT_EQ(volume.by(mode), volume.expected());
    };
    expectConverted(ConvertedVolume<std::uint16_t, float>(), RoundMode::NearestEven);
    expectConverted(ConvertedVolume<std::uint32_t, double>(), RoundMode::Down);
    expectConverted(ConvertedVolume<double, float>(), RoundMode::HalfUp);
    expectConverted(ConvertedVolume<float, float>(), RoundMode::Up);
}

TEST(ConvertImageTest, DoesNothingForADepthOfZeroOrAnUnknownMode) {
    const ConvertedVolume<std::uint8_t, float> toFloat;
    const ConvertedVolume<float, float> copied;
    EXPECT_EQ(toFloat.by(RoundMode::Up, 0), toFloat.untouched());
    EXPECT_EQ(toFloat.by(static_cast<RoundMode>(5)), toFloat.untouched());
    EXPECT_EQ(copied.by(static_cast<RoundMode>(5)), copied.untouched());
}
