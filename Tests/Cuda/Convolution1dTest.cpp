#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "Kernels/CudaConvolution1d.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

using namespace zel::cuda;

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
    T& at(std::size_t x, std::size_t y, std::size_t z) { return pixels[x + y * row() + z * slice()]; }
    const T& at(std::size_t x, std::size_t y, std::size_t z) const { return pixels[x + y * row() + z * slice()]; }
};

template <typename T>
std::shared_ptr<void> toDevice(const std::vector<T>& values) {
    auto device = allocateDeviceMemory(values.size() * sizeof(T));
    checkCudaStatus(cudaMemcpy(device.get(), values.data(), values.size() * sizeof(T), cudaMemcpyHostToDevice));
    return device;
}

template <typename In, typename Out>
void convolve(int axis, const Volume<In>& in, const void* src, Volume<Out>& out, void* dst,
              const std::vector<float>& taps, const Limits& limits) {
    const auto run = axis == 0   ? convolution1dOnRows<In, Out>
                     : axis == 1 ? convolution1dOnColumns<In, Out>
                                 : convolution1dOnZLines<In, Out>;
    const auto deviceTaps = toDevice(taps);
    run(static_cast<const In*>(src), in.row() * sizeof(In), in.slice() * sizeof(In), static_cast<Out*>(dst),
        out.row() * sizeof(Out), out.slice() * sizeof(Out), in.size.width, in.size.height, in.size.depth,
        static_cast<const float*>(deviceTaps.get()), taps.size(), nullptr, limits.blocks, limits.threads);
    checkCudaStatus(cudaDeviceSynchronize());
    checkCudaStatus(cudaMemcpy(out.pixels.data(), dst, out.pixels.size() * sizeof(Out), cudaMemcpyDeviceToHost));
}

/// Pixels 7 of the destination, whose padding must stay so.
template <typename Out, typename In>
Volume<Out> convolved(int axis, const Volume<In>& in, const std::vector<float>& taps, const Limits& limits = {}) {
    Volume<Out> out(in.size, in.padding + 3, Out(7));
    const auto src = toDevice(in.pixels), dst = toDevice(out.pixels);
    convolve(axis, in, src.get(), out, dst.get(), taps, limits);
    return out;
}

template <typename T>
Volume<T> convolvedInPlace(int axis, const Volume<T>& in, const std::vector<float>& taps, const Limits& limits = {}) {
    Volume<T> out = in;
    const auto image = toDevice(in.pixels);
    convolve(axis, in, image.get(), out, image.get(), taps, limits);
    return out;
}

template <typename Out>
Out converted(float sum) {
    if constexpr (std::is_floating_point_v<Out>) return sum;
    const double low = std::is_signed_v<Out> ? -0x1p31 : 0, high = std::is_signed_v<Out> ? 0x1p31 - 1 : 0x1p32 - 1;
    return static_cast<Out>(static_cast<std::int64_t>(std::clamp<double>(sum, low, high)));
}

/// Pixel by pixel, with a line extended by walking to and fro on it.
template <typename Out, typename In>
Volume<Out> reference(int axis, const Volume<In>& in, const std::vector<float>& taps) {
    Volume<Out> out(in.size, in.padding + 3, Out(7));
    const Size& size = in.size;
    const long length = static_cast<long>(axis == 0 ? size.width : axis == 1 ? size.height : size.depth);
    for (std::size_t z = 0; z < size.depth; ++z)
        for (std::size_t y = 0; y < size.height; ++y)
            for (std::size_t x = 0; x < size.width; ++x) {
                const long position = static_cast<long>(axis == 0 ? x : axis == 1 ? y : z);
                float sum = 0;
                for (std::size_t k = 0; k < taps.size(); ++k) {
                    long m = position + static_cast<long>(k) - static_cast<long>(taps.size() / 2);
                    while (m < 0 || m >= length) m = m < 0 ? -1 - m : 2 * length - 1 - m;
                    const In pixel = axis == 0 ? in.at(m, y, z) : axis == 1 ? in.at(x, m, z) : in.at(x, y, m);
                    if constexpr (std::is_same_v<In, double>)
                        sum = static_cast<float>(std::fma(pixel, double{taps[k]}, double{sum}));
                    else
                        sum = std::fma(static_cast<float>(pixel), taps[k], sum);
                }
                out.at(x, y, z) = converted<Out>(sum);
            }
    return out;
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
            for (const int axis : {0, 1, 2}) {
                SCOPED_TRACE(::testing::Message() << size.width << " x " << size.height << " x " << size.depth << ", "
                                                  << tapCount << " taps, axis " << axis);
                const auto out = convolved<Out>(axis, in, taps, limits);
                ASSERT_EQ(out.pixels, reference<Out>(axis, in, taps).pixels);
                if constexpr (std::is_same_v<In, Out>) {
                    auto inPlace = convolvedInPlace(axis, in, taps, limits);
                    for (std::size_t i = 0; i < in.pixels.size(); ++i) {
                        if (i % in.row() >= size.width || i / in.row() % (size.height + 1) == size.height) {
                            ASSERT_EQ(inPlace.pixels[i], in.pixels[i]) << "padding";
                        }
                    }
                    for (std::size_t z = 0; z < size.depth; ++z)
                        for (std::size_t y = 0; y < size.height; ++y)
                            for (std::size_t x = 0; x < size.width; ++x)
                                ASSERT_EQ(inPlace.at(x, y, z), out.at(x, y, z)) << "in place";
                }
            }
        }
    }
}

TEST(Convolution1d, TruncatesAndKeepsLowBits) {
    const Size size{20, 3, 3};
    for (const int axis : {0, 1, 2}) {
        const Volume<u8> flat(size, 0, 255);
        EXPECT_EQ(convolved<u8>(axis, flat, {0.25F, 0.5F, 0.2499999F}).at(4, 1, 1), 254) << "just under 255";
        EXPECT_EQ(convolved<u8>(axis, flat, {1, 1}).at(4, 1, 1), 254) << "510";
        EXPECT_EQ(convolved<u8>(axis, flat, {-0.5F}).at(4, 1, 1), 0) << "unsigned 32-bit saturates at 0";
        EXPECT_EQ(convolved<s16>(axis, Volume<s16>(size, 0, -3), {0.5F}).at(4, 1, 1), -1) << "-1.5";
        EXPECT_EQ(convolved<u32>(axis, Volume<float>(size, 0, 3e9F), {1}).at(4, 1, 1), 3000000000U);
    }
}

// A sum that would keep its last bit in double loses it at each tap.
TEST(Convolution1d, RoundsSumsOfDoublesToFloatAtEachTap) {
    const Volume<double> flat({4, 2, 2}, 0, 1.0);
    const std::vector<float> taps{16777216.0F, 1.0F, 1.0F};
    for (const int axis : {0, 1, 2}) EXPECT_EQ(convolved<double>(axis, flat, taps).at(1, 1, 1), 16777216.0);
}
