#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "DeviceVectors.h"
#include "Kernels/CudaConvolution1d.h"
#include "PlainConvolution.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

struct Size {
    std::size_t width, height, depth;
};

/// The launch's limits; results do not depend on them.
struct Limits {
    unsigned int blocks = 132, threads = 128;
};

/// A volume whose rows have `padding` pixels more than its width, and whose slices have a row more.
template <typename T>
struct Volume {
    Size size;
    std::size_t padding;
    std::vector<T> pixels;

    Volume(const Size& volumeSize, std::size_t rowPadding, T value)
        : size(volumeSize), padding(rowPadding), pixels(slice() * size.depth, value) {}

    std::size_t row() const { return size.width + padding; }
    std::size_t slice() const { return row() * (size.height + 1); }
    /// Where pixel i lies, x fastest.
    std::size_t at(std::size_t i) const {
        const std::size_t y = i / size.width;
        return i % size.width + y % size.height * row() + y / size.height * slice();
    }
    PlainVolume<T> plain() const {
        PlainVolume<T> result{{size.width, size.height, size.depth},
                              std::vector<T>(size.width * size.height * size.depth)};
        for (std::size_t i = 0; i < result.voxels.size(); ++i) result.voxels[i] = pixels[at(i)];
        return result;
    }
};

/// What `out` becomes, padding and all. In place it is that of `in`.
template <typename Out, typename In>
std::vector<Out> convolved(std::size_t axis, const Volume<In>& in, const Volume<Out>& out,
                           const std::vector<float>& taps, const Limits& limits = {}, bool inPlace = false) {
    constexpr decltype(&convolution1dOnRows<In, Out>) axes[]{convolution1dOnRows, convolution1dOnColumns,
                                                             convolution1dOnZLines};
    const auto src = toDevice(in.pixels), dst = inPlace ? src : toDevice(out.pixels), deviceTaps = toDevice(taps);
    axes[axis](static_cast<const In*>(src.get()), in.row() * sizeof(In), in.slice() * sizeof(In),
               static_cast<Out*>(dst.get()), out.row() * sizeof(Out), out.slice() * sizeof(Out), in.size.width,
               in.size.height, in.size.depth, static_cast<const float*>(deviceTaps.get()), taps.size(), nullptr,
               limits.blocks, limits.threads);
    return toHost<Out>(dst, out.pixels.size());
}

template <typename Out, typename In>
std::vector<Out> plainlyConvolved(std::size_t axis, const Volume<In>& in, Volume<Out> out,
                                  const std::vector<float>& taps) {
    const auto result = plainPass<Out>(in.plain(), axis, taps);
    for (std::size_t i = 0; i < result.voxels.size(); ++i) out.pixels[out.at(i)] = result.voxels[i];
    return out.pixels;
}

template <typename T>
Volume<T> randomVolume(const Size& size, std::mt19937& random) {
    Volume<T> volume(size, 2, T{});
    for (T& pixel : volume.pixels)
        pixel =
            std::is_floating_point_v<T> ? static_cast<T>((random() % 100000) / 7.0 - 5000) : static_cast<T>(random());
    return volume;
}

/// Some of both signs, of a sum of about 1.
std::vector<float> randomTaps(std::size_t count, std::mt19937& random) {
    std::vector<float> taps(count);
    for (float& tap : taps) tap = (static_cast<float>(random() % 1000) / 800 - 0.125F) / static_cast<float>(count) * 2;
    return taps;
}

template <typename InType, typename OutType>
struct Pair {
    using In = InType;
    using Out = OutType;
};

template <typename TypePair>
class Convolution1dTest : public ::testing::Test {};

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using s8 = std::int8_t;
using s16 = std::int16_t;
using s32 = std::int32_t;
using TypePairs =
    ::testing::Types<Pair<u8, u8>, Pair<u16, u16>, Pair<u32, u32>, Pair<s8, s8>, Pair<s16, s16>, Pair<s32, s32>,
                     Pair<float, float>, Pair<double, double>, Pair<u8, float>, Pair<u16, float>, Pair<u32, float>,
                     Pair<s8, float>, Pair<s16, float>, Pair<s32, float>, Pair<double, float>, Pair<float, u8>,
                     Pair<float, u16>, Pair<float, u32>, Pair<float, s8>, Pair<float, s16>, Pair<float, s32>,
                     Pair<float, double>>;
TYPED_TEST_SUITE(Convolution1dTest, TypePairs);

}  // namespace

// Bit for bit, with all padding. Widths around the bundles' sizes; lines shorter than the taps and, on the second axis,
// more of them than there are blocks; limits that make blocks and threads do several lines and pixels each.
TYPED_TEST(Convolution1dTest, GivesTheSumsInTheOrderOfTheTaps) {
    using In = typename TypeParam::In;
    using Out = typename TypeParam::Out;
    const Size sizes[]{{1, 1, 1}, {3, 5, 2}, {15, 2, 3}, {64, 3, 1}, {95, 4, 2}, {215, 1, 2}, {2, 140, 1}, {7, 2, 70}};
    const Limits manyLimits[]{{132, 128}, {1, 1}, {3, 7}};
    std::mt19937 random(17);
    for (const Size& size : sizes) {
        const auto in = randomVolume<In>(size, random);
        for (const std::size_t tapCount : {1, 4, 9, 25}) {
            const auto taps = randomTaps(tapCount, random);
            const Limits& limits = manyLimits[random() % std::size(manyLimits)];
            const Volume<Out> out(size, in.padding + 3, Out(7));
            for (const std::size_t axis : {0, 1, 2}) {
                SCOPED_TRACE(::testing::Message() << size.width << " x " << size.height << " x " << size.depth << ", "
                                                  << tapCount << " taps, axis " << axis);
                ASSERT_EQ(convolved(axis, in, out, taps, limits), plainlyConvolved(axis, in, out, taps));
                if constexpr (std::is_same_v<In, Out>) {
                    ASSERT_EQ(convolved(axis, in, in, taps, limits, true), plainlyConvolved(axis, in, in, taps));
                }
            }
        }
    }
}

// By hand, in the middle of a flat volume.
TEST(Convolution1dByHandTest, TruncatesAndKeepsLowBits) {
    const Size size{20, 3, 3};
    for (const std::size_t axis : {0, 1, 2}) {
        const auto sum = [&]<typename In, typename Out>(In pixel, Out, const std::vector<float>& taps) {
            const Volume<Out> out(size, 0, Out(7));
            return convolved(axis, Volume<In>(size, 0, pixel), out, taps)[out.at(84)];
        };
        EXPECT_EQ(sum(u8{255}, u8{}, {0.25F, 0.5F, 0.2499999F}), 254) << "just under 255";
        EXPECT_EQ(sum(u8{255}, u8{}, {1, 1}), 254) << "510";
        EXPECT_EQ(sum(u8{255}, u8{}, {-0.5F}), 0) << "unsigned 32-bit saturates at 0";
        EXPECT_EQ(sum(s16{-3}, s16{}, {0.5F}), -1) << "-1.5";
        EXPECT_EQ(sum(3e9F, u32{}, {1}), 3000000000U);
        EXPECT_EQ(sum(1.0, 0.0, {0x1p24F, 1, 1}), 0x1p24) << "rounded to float at each tap";
    }
}
