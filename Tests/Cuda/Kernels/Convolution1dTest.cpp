#include "Kernels/CudaConvolution1d.h"
#include "PaddedVolume.h"
#include "TestImages.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// Blocks and threads of a launch at most; results do not depend on them.
using Limits = std::pair<unsigned int, unsigned int>;

/// What `out` becomes, padding and all. In place it is that of `in`.
template <typename In, typename Out>
std::vector<Out> convolved(std::size_t axis, const PaddedVolume<In>& in, const PaddedVolume<Out>& out,
                           const std::vector<float>& taps, const Limits& limits, bool inPlace = false) {
    constexpr decltype(&convolution1dOnRows<In, Out>) axes[]{convolution1dOnRows, convolution1dOnColumns,
                                                             convolution1dOnZLines};
    const auto src = toDevice(in.elements);
    const auto dst = inPlace ? std::reinterpret_pointer_cast<Out>(src) : toDevice(out.elements);
    const auto deviceTaps = toDevice(taps);
    axes[axis](src.get(), in.pitch(), in.slicePitch(), dst.get(), out.pitch(), out.slicePitch(), in.size[0], in.size[1],
               in.size[2], deviceTaps.get(), taps.size(), nullptr, limits.first, limits.second);
    return toHost(dst, out.elements.size());
}

template <typename T>
PaddedVolume<T> randomVolume(const std::array<std::size_t, 3>& size, std::mt19937& random) {
    PaddedVolume<T> volume(size, 2, T{});
    for (T& element : volume.elements) {
        element =
            std::is_floating_point_v<T> ? static_cast<T>((random() % 100000) / 7.0 - 5000) : static_cast<T>(random());
    }
    return volume;
}

/// Some of both signs, of a sum of about 1.
std::vector<float> randomTaps(std::size_t count, std::mt19937& random) {
    std::vector<float> taps(count);
    for (float& tap : taps) tap = (static_cast<float>(random() % 1000) / 800 - 0.125F) / static_cast<float>(count) * 2;
    return taps;
}

// Bit for bit, with all padding. Widths around the bundles' sizes; lines shorter than the taps and, on the second axis,
// more of them than there are blocks; limits that make blocks and threads do several lines and pixels each.
template <typename In, typename Out>
void expectSumsInTheOrderOfTheTaps() {
    const Limits manyLimits[]{{132, 128}, {1, 1}, {3, 7}};
    std::mt19937 random(17);
    for (const auto& size : std::initializer_list<std::array<std::size_t, 3>>{
             {1, 1, 1}, {3, 5, 2}, {15, 2, 3}, {64, 3, 1}, {95, 4, 2}, {215, 1, 2}, {2, 140, 1}, {7, 2, 70}}) {
        const auto in = randomVolume<In>(size, random);
        const PaddedVolume<Out> out(size, 5, Out(7));
        for (const std::size_t tapCount : {1, 4, 9, 25}) {
            const auto taps = randomTaps(tapCount, random);
            const Limits& limits = manyLimits[random() % std::size(manyLimits)];
            for (const std::size_t axis : {0, 1, 2}) {
                SCOPED_TRACE(::testing::Message() << size[0] << " x " << size[1] << " x " << size[2] << ", " << tapCount
                                                  << " taps, axis " << axis);
                const auto expected = plainPass<Out>(in.plain(), axis, taps).voxels;
                ASSERT_EQ(convolved(axis, in, out, taps, limits), out.with(expected));
                if constexpr (std::is_same_v<In, Out>) {
                    ASSERT_EQ(convolved(axis, in, in, taps, limits, true), in.with(expected));
                }
            }
        }
    }
}

template <typename T>
class Convolution1dTest : public ::testing::Test {};
TYPED_TEST_SUITE(Convolution1dTest, decltype(testedTypes(KernelTypes{})));

}  // namespace

TYPED_TEST(Convolution1dTest, GivesTheSumsInTheOrderOfTheTaps) {
    expectSumsInTheOrderOfTheTaps<TypeParam, TypeParam>();
    expectSumsInTheOrderOfTheTaps<TypeParam, float>();
    expectSumsInTheOrderOfTheTaps<float, TypeParam>();
}
