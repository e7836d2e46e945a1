#include <array>
#include <cmath>
#include <compare>
#include <limits>
#include <utility>

#include "DeviceFixture.h"
#include "NppImage.h"
#include "NppMorphologyCalls.h"

namespace zel::test {
namespace {

/// A mask without padding, and its copy on the device.
struct Mask {
    Mask(NppiSize size_, NppiPoint anchor_, std::vector<Npp8u> bytes_)
        : size(size_), anchor(anchor_), bytes(std::move(bytes_)), device(bytes) {}
    Mask(NppiSize size_, NppiPoint anchor_, Npp8u byte)
        : Mask(size_, anchor_, std::vector<Npp8u>(static_cast<std::size_t>(size_.width * size_.height), byte)) {}

    bool isSquare3x3() const {
        return size.width == 3 && size.height == 3 && anchor.x == 1 && anchor.y == 1 &&
               std::ranges::count(bytes, 0) == 0;
    }

    NppiSize size;
    NppiPoint anchor;
    std::vector<Npp8u> bytes;
    host::DeviceArray<Npp8u> device;
};

/// The pixel that erosion or dilation picks at (x, y) of the source; of none, NaN or the last of all integers.
template <typename T>
T plainPixel(bool dilate, const NppImage<T>& src, int x, int y, const Mask& mask) {
    std::vector<T> selected;
    for (int j = 0; j < mask.size.height; ++j) {
        for (int i = 0; i < mask.size.width; ++i) {
            if (mask.bytes[static_cast<std::size_t>(j * mask.size.width + i)] == 0) continue;
            const T pixel = src.at(std::clamp(x - mask.anchor.x + i, 0, src.size().width - 1),
                                   std::clamp(y - mask.anchor.y + j, 0, src.size().height - 1));
            if (pixel == pixel) selected.push_back(pixel);
        }
    }
    using Limits = std::numeric_limits<T>;
    if (selected.empty()) return Limits::has_quiet_NaN ? Limits::quiet_NaN() : dilate ? Limits::min() : Limits::max();
    const auto isBefore = [](T a, T b) { return std::is_lt(std::strong_order(a, b)); };  // -0 before +0
    const auto [low, high] = std::minmax_element(selected.begin(), selected.end(), isBefore);
    return dilate ? *high : *low;
}

template <typename T>
void expectPlain(bool dilate, const NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Mask& mask,
                 int step = 1) {
    dst.download();
    dst.expectEach(
        [&](T pixel, int x, int y) {
            const T expected = plainPixel(dilate, src, offset.x + x, offset.y + y, mask);
            ASSERT_TRUE(std::isnan(static_cast<float>(expected)) ? pixel != pixel
                                                                 : std::is_eq(std::strong_order(pixel, expected)))
                << +pixel << " for " << +expected << " at " << x << ", " << y;
        },
        step);
}

template <typename T>
NppStatus apply(bool dilate, NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Mask& mask) {
    return morphologyFunctions<T>().second[dilate](src.device(offset.x, offset.y), src.step(), src.size(), offset,
                                                   dst.device(), dst.step(), dst.size(), mask.device.get(), mask.size,
                                                   mask.anchor, NPP_BORDER_REPLICATE, {});
}

/// Erodes and dilates the region of dst's size at `offset` of src, by the functions of the square too where that is
/// what the mask is. The pixels looked at are one in `step` of a row.
template <typename T>
void expectExtremes(NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Mask& mask, int step = 1) {
    for (const bool dilate : {false, true}) {
        ASSERT_EQ(apply(dilate, src, offset, dst, mask), NPP_SUCCESS);
        expectPlain(dilate, src, offset, dst, mask, step);
        if (!mask.isSquare3x3()) continue;
        ASSERT_EQ(
            morphologyFunctions<T>().first[dilate](src.device(offset.x, offset.y), src.step(), src.size(), offset,
                                                   dst.device(), dst.step(), dst.size(), NPP_BORDER_REPLICATE, {}),
            NPP_SUCCESS);
        expectPlain(dilate, src, offset, dst, mask, step);
    }
}

const std::vector<Npp8u> cross3x3{0, 1, 0, 1, 1, 1, 0, 1, 0};

/// A cross, a full mask, a thin or a dense random one: they are worked out in different ways.
std::vector<Npp8u> maskBytes(NppiSize size, std::mt19937& random) {
    if (size.width == 3 && size.height == 3 && random() % 4 == 0) return cross3x3;
    std::vector<Npp8u> bytes(static_cast<std::size_t>(size.width * size.height));
    const unsigned eighths = std::array{8u, 1u, 6u}[random() % 3];
    for (Npp8u& byte : bytes) byte = random() % 8 < eighths ? static_cast<Npp8u>(1 + random() % 255) : 0;
    bytes[random() % bytes.size()] = 1;
    return bytes;
}

template <typename T>
class NppMorphologyTest : public ::testing::Test {};
using PixelTypes = ::testing::Types<Npp8u, Npp16u, Npp32f>;
TYPED_TEST_SUITE(NppMorphologyTest, PixelTypes);

TYPED_TEST(NppMorphologyTest, PicksTheExtremeUnderAnyMask) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        const bool small = seed % 3 == 0, whole = seed % 2 == 0;
        const NppiSize size{1 + below(small ? 5 : 90), 1 + below(small ? 5 : 40)};
        const NppiSize maskSize =
            seed % 4 == 0 ? NppiSize{3, 3} : NppiSize{1 + below(seed % 5 == 0 ? 70 : 9), 1 + below(9)};
        const NppiPoint anchor =
            seed % 8 == 0 ? NppiPoint{1, 1} : NppiPoint{below(maskSize.width), below(maskSize.height)};
        const Mask mask(maskSize, anchor, maskBytes(maskSize, random));
        SCOPED_TRACE(::testing::Message()
                     << "seed " << seed << ", mask " << maskSize.width << " x " << maskSize.height);
        auto src = NppImage<TypeParam>::random(size, seed);
        const NppRegion region = whole ? NppRegion{{0, 0}, size} : randomRegion(size, below);
        NppImage<TypeParam> dst(region.size);
        expectExtremes(src, region.offset, dst, mask);
    }
}

// Masks larger than the image on both sides, and images larger than the pieces that they are cut into.
TYPED_TEST(NppMorphologyTest, PicksTheExtremeUnderLargeMasksAndInLargeImages) {
    std::mt19937 random(3);
    for (const NppiSize size : {NppiSize{3, 3}, {31, 33}, {3, 150}, {200, 2}}) {
        const NppiPoint anchor{size.width / 3, size.height / 2};
        const Mask full(size, anchor, Npp8u{1});
        std::vector<Npp8u> bytes = full.bytes;
        for (Npp8u& byte : bytes) byte = random() % 40 != 0;
        const Mask holed(size, anchor, bytes), empty(size, anchor, Npp8u{0});
        for (const NppiSize imageSize : {NppiSize{6, 4}, {700, 210}, {17000, 3}}) {
            SCOPED_TRACE(::testing::Message() << size.width << " x " << size.height << " of " << imageSize.width);
            auto src = NppImage<TypeParam>::random(imageSize, 9);
            NppImage<TypeParam> dst(imageSize);
            for (const Mask* mask : {&full, &holed, &empty})
                expectExtremes(src, {0, 0}, dst, *mask, imageSize.width < 10 ? 1 : 401);
        }
    }
}

TEST(NppMorphologyMaskTest, IsReadInTheOrderOfTheStream) {
    const host::ScopedTestModes deferred({.deferredStreams = true});
    auto src = NppImage<Npp8u>::random({6, 6}, 1);
    NppImage<Npp8u> dst({6, 6});
    const Mask mask({3, 3}, {1, 1}, Npp8u{0}), full({3, 3}, {1, 1}, Npp8u{1});
    ASSERT_EQ(cudaMemsetAsync(mask.device.get(), 1, 9, nullptr), cudaSuccess);
    ASSERT_EQ(apply(false, src, {0, 0}, dst, mask), NPP_SUCCESS);
    ASSERT_EQ(cudaMemsetAsync(mask.device.get(), 0, 9, nullptr), cudaSuccess);
    expectPlain(false, src, {0, 0}, dst, full);
}

// The bits of a result must not depend on where in a register or a tile a pixel lies.
TEST(NppMorphologyFloatTest, NotANumberIsPassedOverAndZerosAreOrdered) {
    NppImage<float> src = imageOfSpecials(), dst(src.size());
    const Mask masks[] = {{{3, 3}, {1, 1}, Npp8u{1}},
                          {{3, 3}, {1, 1}, cross3x3},
                          {{5, 2}, {2, 1}, Npp8u{1}},
                          {{4, 2}, {2, 1}, {1, 0, 1, 1, 0, 1, 1, 0}}};
    for (const Mask& mask : masks) expectExtremes(src, {0, 0}, dst, mask);
}

}  // namespace
}  // namespace zel::test
