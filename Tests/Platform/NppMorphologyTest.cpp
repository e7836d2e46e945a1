#include <host_device.h>
#include <nppi_morphological_operations.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "DeviceFixture.h"
#include "NppImage.h"

namespace zel::test {
namespace {

/// Erosion and dilation of a type, by the square of 3 by 3 and by a mask.
template <typename T>
constexpr auto functions() {
    if constexpr (std::is_same_v<T, Npp8u>) {
        return std::pair(std::array{nppiErode3x3Border_8u_C1R_Ctx, nppiDilate3x3Border_8u_C1R_Ctx},
                         std::array{nppiErodeBorder_8u_C1R_Ctx, nppiDilateBorder_8u_C1R_Ctx});
    } else if constexpr (std::is_same_v<T, Npp16u>) {
        return std::pair(std::array{nppiErode3x3Border_16u_C1R_Ctx, nppiDilate3x3Border_16u_C1R_Ctx},
                         std::array{nppiErodeBorder_16u_C1R_Ctx, nppiDilateBorder_16u_C1R_Ctx});
    } else {
        return std::pair(std::array{nppiErode3x3Border_32f_C1R_Ctx, nppiDilate3x3Border_32f_C1R_Ctx},
                         std::array{nppiErodeBorder_32f_C1R_Ctx, nppiDilateBorder_32f_C1R_Ctx});
    }
}

/// A mask without padding, and its copy on the device.
struct Mask {
    Mask(NppiSize size_, NppiPoint anchor_, std::vector<Npp8u> bytes_)
        : size(size_), anchor(anchor_), bytes(std::move(bytes_)), device(bytes.size()) {
        upload();
    }
    void upload() { EXPECT_EQ(cudaMemcpy(device.get(), bytes.data(), bytes.size(), cudaMemcpyHostToDevice), 0); }

    NppiSize size;
    NppiPoint anchor;
    std::vector<Npp8u> bytes;
    host::DeviceArray<Npp8u> device;
};

template <typename T>
NppStatus apply(bool dilate, NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Mask& mask) {
    return functions<T>().second[dilate](src.device(offset.x, offset.y), src.step(), src.size(), offset, dst.device(),
                                         dst.step(), dst.size(), mask.device.get(), mask.size, mask.anchor,
                                         NPP_BORDER_REPLICATE, {});
}

template <typename T>
NppStatus applySquare(bool dilate, NppImage<T>& src, NppiPoint offset, NppImage<T>& dst) {
    return functions<T>().first[dilate](src.device(offset.x, offset.y), src.step(), src.size(), offset, dst.device(),
                                        dst.step(), dst.size(), NPP_BORDER_REPLICATE, {});
}

/// Smaller, and of two zeros the negative one.
template <typename T>
bool isBefore(T a, T b) {
    return a < b || (a == b && std::signbit(static_cast<float>(a)) && !std::signbit(static_cast<float>(b)));
}

/// The pixel that erosion or dilation picks at (x, y) of the source; NaN only where there is nothing else.
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
    if (selected.empty()) return std::numeric_limits<T>::quiet_NaN();
    const auto [low, high] = std::minmax_element(selected.begin(), selected.end(), isBefore<T>);
    return dilate ? *high : *low;
}

template <typename T>
void expectPlain(bool dilate, const NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Mask& mask) {
    dst.download();
    dst.expectEach([&](T pixel, int x, int y) {
        const T expected = plainPixel(dilate, src, offset.x + x, offset.y + y, mask);
        if (expected != expected && pixel != pixel) return;
        ASSERT_EQ(pixel, expected) << x << ", " << y;
        ASSERT_TRUE(!isBefore(pixel, expected) && !isBefore(expected, pixel)) << "signs, " << x << ", " << y;
    });
}

std::vector<Npp8u> cross3x3() {
    return {0, 1, 0, 1, 1, 1, 0, 1, 0};
}

/// A cross, a full mask, a thin or a dense random one: they are worked out in different ways.
std::vector<Npp8u> maskBytes(NppiSize size, std::mt19937& random) {
    const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    const unsigned kind = random() % 4;
    if (kind == 0 && size.width == 3 && size.height == 3) return cross3x3();
    std::vector<Npp8u> bytes(count, 255);
    if (kind == 1) return bytes;
    for (Npp8u& byte : bytes) byte = random() % 8 < (kind == 2 ? 1 : 6) ? static_cast<Npp8u>(1 + random() % 255) : 0;
    bytes[random() % count] = 1;
    return bytes;
}

template <typename T>
class NppMorphologyTest : public ::testing::Test {};
using PixelTypes = ::testing::Types<Npp8u, Npp16u, Npp32f>;
TYPED_TEST_SUITE(NppMorphologyTest, PixelTypes);

TYPED_TEST(NppMorphologyTest, PicksTheExtremeUnderAnyMask) {
    using T = TypeParam;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        const auto upTo = [&](unsigned limit) { return static_cast<int>(1 + random() % limit); };
        const bool small = seed % 3 == 0;
        const NppiSize size{upTo(small ? 5 : 90), upTo(small ? 5 : 40)};
        const NppiSize maskSize = seed % 4 == 0 ? NppiSize{3, 3} : NppiSize{upTo(seed % 5 == 0 ? 70 : 9), upTo(9)};
        const NppiPoint anchor = seed % 8 == 0 ? NppiPoint{1, 1}
                                               : NppiPoint{upTo(static_cast<unsigned>(maskSize.width)) - 1,
                                                           upTo(static_cast<unsigned>(maskSize.height)) - 1};
        const Mask mask(maskSize, anchor, maskBytes(maskSize, random));
        NppImage<T> src(size);
        src.randomise(seed);
        const bool whole = seed % 2 == 0;
        const auto below = [&](int limit) { return whole ? 0 : upTo(static_cast<unsigned>(limit)) - 1; };
        const NppiPoint offset{below(size.width), below(size.height)};
        NppImage<T> dst({size.width - offset.x - below(size.width - offset.x),
                         size.height - offset.y - below(size.height - offset.y)});
        SCOPED_TRACE(::testing::Message()
                     << "seed " << seed << ", mask " << maskSize.width << " x " << maskSize.height);
        for (const bool dilate : {false, true}) {
            ASSERT_EQ(apply(dilate, src, offset, dst, mask), NPP_SUCCESS);
            expectPlain(dilate, src, offset, dst, mask);
        }
    }
}

TYPED_TEST(NppMorphologyTest, SquareIsAFullMask) {
    using T = TypeParam;
    const Mask full({3, 3}, {1, 1}, std::vector<Npp8u>(9, 1));
    for (const NppiSize size : {NppiSize{1, 1}, {1, 7}, {2, 2}, {65, 1}, {130, 33}, {17000, 3}}) {
        NppImage<T> src(size);
        src.randomise(4);
        for (const NppiPoint offset : {NppiPoint{0, 0}, NppiPoint{size.width / 2, size.height / 2}}) {
            NppImage<T> dst({(size.width - offset.x + 1) / 2, size.height - offset.y});
            for (const bool dilate : {false, true}) {
                ASSERT_EQ(applySquare(dilate, src, offset, dst), NPP_SUCCESS);
                expectPlain(dilate, src, offset, dst, full);
            }
        }
    }
}

// Larger than the image on both sides, and than the pieces that images are cut into.
TYPED_TEST(NppMorphologyTest, LargeMasksAndImages) {
    using T = TypeParam;
    NppImage<T> src({700, 210}), dst({700, 210}), small({6, 4}), smallDst({6, 4});
    src.randomise(9);
    small.randomise(9);
    std::mt19937 random(3);
    for (const NppiSize size : {NppiSize{31, 33}, {3, 150}, {200, 2}}) {
        for (const bool full : {true, false}) {
            const auto count = static_cast<std::size_t>(size.width * size.height);
            Mask mask(size, {size.width / 3, size.height / 2}, std::vector<Npp8u>(count, 1));
            if (!full) {
                for (Npp8u& byte : mask.bytes) byte = random() % 40 != 0;
                mask.bytes[random() % count] = 1;
            }
            mask.upload();
            for (const bool dilate : {false, true}) {
                ASSERT_EQ(apply(dilate, small, {0, 0}, smallDst, mask), NPP_SUCCESS);
                expectPlain(dilate, small, {0, 0}, smallDst, mask);
                ASSERT_EQ(apply(dilate, src, {0, 0}, dst, mask), NPP_SUCCESS);
                dst.download();
                for (int y = 0; y < 210; y += 19) {
                    for (int x = y % 11; x < 700; x += 23) {
                        ASSERT_EQ(dst.at(x, y), plainPixel(dilate, src, x, y, mask)) << x << ", " << y;
                    }
                }
            }
        }
    }
}

TEST(NppMorphologyMaskTest, OfZerosSelectsNothing) {
    const Mask mask({3, 2}, {1, 1}, std::vector<Npp8u>(6, 0));
    NppImage<Npp16u> src({9, 5}, 100), dst({9, 5});
    ASSERT_EQ(apply(false, src, {0, 0}, dst, mask), NPP_SUCCESS);
    dst.download();
    EXPECT_EQ(dst.at(8, 4), 65535);
    ASSERT_EQ(apply(true, src, {0, 0}, dst, mask), NPP_SUCCESS);
    dst.download();
    EXPECT_EQ(dst.at(8, 4), 0);
}

TEST(NppMorphologyMaskTest, IsReadInTheOrderOfTheStream) {
    const host::ScopedTestModes deferred({.deferredStreams = true});
    NppImage<Npp8u> src({6, 6}), dst({6, 6});
    src.randomise(1);
    Mask mask({3, 3}, {1, 1}, std::vector<Npp8u>(9, 0));
    ASSERT_EQ(cudaMemsetAsync(mask.device.get(), 1, 9, nullptr), cudaSuccess);
    ASSERT_EQ(apply(false, src, {0, 0}, dst, mask), NPP_SUCCESS);
    ASSERT_EQ(cudaMemsetAsync(mask.device.get(), 0, 9, nullptr), cudaSuccess);
    std::fill(mask.bytes.begin(), mask.bytes.end(), Npp8u{1});
    expectPlain(false, src, {0, 0}, dst, mask);
}

// The bits of a result must not depend on where in a register or a tile a pixel lies.
TEST(NppMorphologyFloatTest, NotANumberIsPassedOverAndZerosAreOrdered) {
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
    const float specials[] = {0.0f, -0.0f, nan, -nan, infinity, -infinity, 1.0f};
    NppImage<float> src({150, 20});
    std::mt19937 random(5);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 150; ++x) src.at(x, y) = x < 20 ? nan : specials[random() % (x < 80 ? 4 : 7)];
    }
    src.upload();
    const Mask masks[] = {{{3, 3}, {1, 1}, std::vector<Npp8u>(9, 1)},
                          {{3, 3}, {1, 1}, cross3x3()},
                          {{5, 2}, {2, 1}, std::vector<Npp8u>(10, 1)},
                          {{4, 2}, {2, 1}, {1, 0, 1, 1, 0, 1, 1, 0}}};
    for (const Mask& mask : masks) {
        for (const bool dilate : {false, true}) {
            NppImage<float> dst(src.size());
            ASSERT_EQ(apply(dilate, src, {0, 0}, dst, mask), NPP_SUCCESS);
            expectPlain(dilate, src, {0, 0}, dst, mask);
        }
    }
}

}  // namespace
}  // namespace zel::test
