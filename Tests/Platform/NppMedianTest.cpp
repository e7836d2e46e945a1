#include <host_device.h>
#include <nppi_filtering_functions.h>

#include <algorithm>
#include <cmath>
#include <compare>
#include <cstdint>
#include <limits>

#include "DeviceFixture.h"
#include "NppImage.h"
#include "PlainFilters.h"

namespace zel::test {
namespace {

template <typename T>
struct Functions;
#define ZEL_FUNCTIONS(suffix, Pixel)                                                                \
    template <>                                                                                     \
    struct Functions<Pixel> {                                                                       \
        static constexpr auto filter = &nppiFilterMedianBorder_##suffix##_C1R_Ctx;                  \
        static constexpr auto bufferSize = &nppiFilterMedianBorderGetBufferSize_##suffix##_C1R_Ctx; \
    };
ZEL_FUNCTIONS(8u, Npp8u)
ZEL_FUNCTIONS(16u, Npp16u)
ZEL_FUNCTIONS(16s, Npp16s)
ZEL_FUNCTIONS(32f, Npp32f)

using Window = NppWindow;

Window square(int radius) {
    return {{2 * radius + 1, 2 * radius + 1}, {radius, radius}};
}

template <typename T>
Npp32u bufferBytes(NppiSize roi, NppiSize mask) {
    Npp32u bytes = 0;
    EXPECT_EQ(Functions<T>::bufferSize(roi, mask, &bytes, NPP_BORDER_MIRROR, {}), NPP_SUCCESS);
    return bytes;
}

/// Filters the region of dst's size at `offset` of src.
template <typename T>
void filter(NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Window& window) {
    const host::DeviceArray<Npp8u> buffer(std::max(1U, bufferBytes<T>(dst.size(), window.mask)));
    ASSERT_EQ(
        Functions<T>::filter(src.device(offset.x, offset.y), src.step(), src.size(), offset, dst.device(), dst.step(),
                             dst.size(), window.mask, window.anchor, buffer.get(), NPP_BORDER_MIRROR, {}),
        NPP_SUCCESS);
    dst.download();
}

/// -0 before 0, NaN after all numbers.
template <typename T>
bool isBefore(T a, T b) {
    if (a != a || b != b) return a == a;
    if constexpr (std::is_floating_point_v<T>) return std::is_lt(std::strong_order(a, b));
    return a < b;
}

template <typename T>
T plainMedian(const NppImage<T>& src, int x, int y, const Window& window) {
    std::vector<T> pixels;
    for (int j = 0; j < window.mask.height; ++j)
        for (int i = 0; i < window.mask.width; ++i)
            pixels.push_back(src.at(static_cast<int>(mirroredAtEdge(x - window.anchor.x + i, src.size().width)),
                                    static_cast<int>(mirroredAtEdge(y - window.anchor.y + j, src.size().height))));
    const auto middle = pixels.begin() + static_cast<std::ptrdiff_t>(pixels.size() / 2);
    std::nth_element(pixels.begin(), middle, pixels.end(), isBefore<T>);
    return *middle;
}

template <typename T>
void expectMedians(NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Window& window, int step = 1) {
    filter(src, offset, dst, window);
    dst.expectEach(
        [&](T pixel, int x, int y) {
            const T expected = plainMedian(src, offset.x + x, offset.y + y, window);
            ASSERT_TRUE(!isBefore(pixel, expected) && !isBefore(expected, pixel))
                << +pixel << " for " << +expected << " at " << x << ", " << y;
        },
        step);
}

template <typename T>
class NppMedianTest : public ::testing::Test {};
using PixelTypes = ::testing::Types<Npp8u, Npp16u, Npp16s, Npp32f>;
TYPED_TEST_SUITE(NppMedianTest, PixelTypes);

/// Random pixels; on request from a few values only, so that many are equal, the extreme ones among them.
template <typename T>
NppImage<T> pixelsOf(NppiSize size, unsigned seed, bool fewValues) {
    auto image = NppImage<T>::random(size, seed);
    if (!fewValues) return image;
    constexpr T few[] = {std::numeric_limits<T>::lowest(), T(0), T(1), std::numeric_limits<T>::max()};
    std::mt19937 random(seed);
    image.fillWith([&](int, int) { return few[random() % 4]; });
    return image;
}

TYPED_TEST(NppMedianTest, IsRightUnderAnyOddMask) {
    for (unsigned seed = 1; seed <= 120; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        const bool small = seed % 3 == 0, whole = seed % 2 == 0;
        const NppiSize size{1 + below(small ? 5 : 150), 1 + below(small ? 5 : 40)};
        Window window = square(below(seed % 5 == 0 ? 12 : 5));
        if (seed % 4 == 0) {
            window.mask = {1 + 2 * below(20), 1 + 2 * below(8)};
            window.anchor = {below(window.mask.width), below(window.mask.height)};
        }
        SCOPED_TRACE(::testing::Message()
                     << "seed " << seed << ", " << window << ", image " << size.width << " x " << size.height);
        auto src = pixelsOf<TypeParam>(size, seed, seed % 7 == 0);
        const NppRegion region = whole ? NppRegion{{0, 0}, size} : randomRegion(size, below);
        NppImage<TypeParam> dst(region.size);
        expectMedians(src, region.offset, dst, window);
    }
}

// Masks of several times the image on both sides, up to more pixels than 16 bits count, and images larger than the
// pieces that they are cut into.
TYPED_TEST(NppMedianTest, LargeMasksAndImages) {
    for (const int radius : {1, 2, 3, 4, 6, 10, 16, 40, 130}) {
        for (const NppiSize size : {NppiSize{6, 4}, {500, 130}, {3000, 3}}) {
            SCOPED_TRACE(::testing::Message() << "radius " << radius << ", image " << size.width);
            auto src = pixelsOf<TypeParam>(size, 9, radius % 2 == 0);
            NppImage<TypeParam> dst(size);
            expectMedians(src, {0, 0}, dst, square(radius), size.width < 10 ? 1 : 17 + 20 * radius);
        }
    }
}

TEST(NppMedianFloatTest, ZerosAreOrderedAndNotANumberComesLast) {
    NppImage<float> src = imageOfSpecials(), dst(src.size());
    for (const int radius : {0, 1, 2, 3, 5, 15, 40}) expectMedians(src, {0, 0}, dst, square(radius));
}

TEST(NppMedianArgumentsTest, FaultyOnesGiveTheVendorsCodesAndWriteNothing) {
    constexpr NppiSize size{40, 30};
    auto src = NppImage<Npp16u>::random(size, 1);
    NppImage<Npp16u> dst(size, 2);
    const Window window = square(5);
    const Npp32u bytes = bufferBytes<Npp16u>(size, window.mask);
    const host::DeviceArray<Npp8u> buffer(bytes);
    Npp8u onHost[8]{};
    const auto call = [&](NppiSize mask, NppiPoint anchor, Npp8u* work, NppiBorderType border = NPP_BORDER_MIRROR) {
        return nppiFilterMedianBorder_16u_C1R_Ctx(src.device(), src.step(), size, {0, 0}, dst.device(), dst.step(),
                                                  size, mask, anchor, work, border, {});
    };
    EXPECT_EQ(call({10, 11}, {5, 5}, buffer.get()), -33);
    EXPECT_EQ(call({11, 10}, {5, 5}, buffer.get()), -33);
    EXPECT_EQ(call({11, 0}, {5, 0}, buffer.get()), -33);
    EXPECT_EQ(call({11, 11}, {11, 5}, buffer.get()), -34);
    EXPECT_EQ(call({11, 11}, {5, 5}, buffer.get(), NPP_BORDER_REPLICATE), -9999);
    EXPECT_EQ(call({11, 11}, {5, 5}, nullptr), -8);
    {
        const host::ScopedTestModes separate({.separateMemory = true});
        EXPECT_EQ(call({11, 11}, {5, 5}, onHost), -1031);
    }
    EXPECT_EQ(call({11, 11}, {5, 5}, buffer.get() + 8), -1031);
    EXPECT_EQ(call({11, 13}, {5, 5}, buffer.get()), -1031) << "a mask that needs more";
    dst.download();
    dst.expectEach([](Npp16u pixel, int, int) { EXPECT_EQ(pixel, 2); });
    EXPECT_EQ(call({11, 11}, {5, 5}, buffer.get()), 0);
    EXPECT_EQ(call({5, 5}, {2, 2}, nullptr), 0) << "small masks need none";
}

TEST(NppMedianArgumentsTest, QueryCountsBytesThatFit32Bits) {
    Npp32u bytes = 7;
    const auto query = [&](NppiSize roi, NppiSize mask, NppiBorderType border = NPP_BORDER_MIRROR) {
        return nppiFilterMedianBorderGetBufferSize_32f_C1R_Ctx(roi, mask, &bytes, border, {});
    };
    EXPECT_EQ(nppiFilterMedianBorderGetBufferSize_8u_C1R_Ctx({9, 9}, {9, 9}, nullptr, NPP_BORDER_MIRROR, {}), -8);
    EXPECT_EQ(query({0, 9}, {9, 9}), -6);
    EXPECT_EQ(query({9, 9}, {9, 8}), -33);
    EXPECT_EQ(query({9, 9}, {9, 9}, NPP_BORDER_REPLICATE), -9999);
    EXPECT_EQ(query({9, 9}, {2147483647, 2147483647}), -9);
    EXPECT_EQ(query({32759, 32759}, {11, 11}), -9);
    EXPECT_EQ(bytes, 7U) << "untouched";
    EXPECT_EQ(query({32757, 32757}, {11, 11}), 0);
    EXPECT_EQ(bytes, 4U * 32767 * 32767);
    EXPECT_EQ(query({100000, 100000}, {7, 7}), 0);
    EXPECT_EQ(bytes, 0U);
}

}  // namespace
}  // namespace zel::test
