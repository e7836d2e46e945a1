#include <host_device.h>
#include <nppi_filtering_functions.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "Npp/Box/BoxDivision.h"
#include "NppImage.h"

namespace zel::test {
namespace {

struct Window {
    NppiSize mask;
    NppiPoint anchor;
};

std::ostream& operator<<(std::ostream& out, const Window& window) {
    return out << "mask " << window.mask.width << " x " << window.mask.height << ", anchor " << window.anchor.x << ", "
               << window.anchor.y;
}

Window centred(int width, int height) {
    return {{width, height}, {width / 2, height / 2}};
}

template <typename T>
constexpr auto boxFunction() {
    if constexpr (std::is_same_v<T, Npp8u>) return nppiFilterBoxBorder_8u_C1R_Ctx;
    if constexpr (std::is_same_v<T, Npp16u>) return nppiFilterBoxBorder_16u_C1R_Ctx;
    if constexpr (std::is_same_v<T, Npp16s>) return nppiFilterBoxBorder_16s_C1R_Ctx;
    if constexpr (std::is_same_v<T, Npp32f>) return nppiFilterBoxBorder_32f_C1R_Ctx;
}

/// Filters the region of dst's size at `offset` of src.
template <typename T>
void filter(NppImage<T>& src, NppiPoint offset, NppImage<T>& dst, const Window& window) {
    ASSERT_EQ(boxFunction<T>()(src.device(offset.x, offset.y), src.step(), src.size(), offset, dst.device(), dst.step(),
                               dst.size(), window.mask, window.anchor, NPP_BORDER_REPLICATE, {}),
              NPP_SUCCESS);
    dst.download();
}

template <typename T>
NppImage<T> filtered(NppImage<T>& src, const Window& window) {
    NppImage<T> dst(src.size());
    filter(src, {0, 0}, dst, window);
    return dst;
}

/// How many of the positions first ... first + count - 1 take pixel i of n.
std::int64_t timesTaken(std::int64_t i, std::int64_t n, std::int64_t first, std::int64_t count) {
    const std::int64_t low = i == 0 ? std::numeric_limits<std::int32_t>::min() : i;
    const std::int64_t high = i == n - 1 ? std::numeric_limits<std::int64_t>::max() / 2 : i;
    return std::max<std::int64_t>(0, std::min(high, first + count - 1) - std::max(low, first) + 1);
}

/// The pixel of n that stands at a position.
int inside(std::int64_t position, int n) {
    return static_cast<int>(std::clamp<std::int64_t>(position, 0, n - 1));
}

/// Mean of the window of source pixel (x, y), truncated for integers; summed pixel by pixel of the image, so that huge
/// masks are quick.
template <typename T>
T plainMean(const NppImage<T>& src, int x, int y, const Window& window) {
    using Sum = std::conditional_t<std::is_floating_point_v<T>, double, host::Signed128>;
    const auto [width, height] = src.size();
    Sum sum = 0;
    const std::int64_t left = std::int64_t{x} - window.anchor.x, top = std::int64_t{y} - window.anchor.y;
    for (int j = inside(top, height); j <= inside(top + window.mask.height - 1, height); ++j) {
        const std::int64_t timesY = timesTaken(j, height, top, window.mask.height);
        for (int i = inside(left, width); i <= inside(left + window.mask.width - 1, width); ++i) {
            const std::int64_t times = timesTaken(i, width, left, window.mask.width);
            sum += static_cast<Sum>(times) * static_cast<Sum>(timesY) * static_cast<Sum>(src.at(i, j));
        }
    }
    return static_cast<T>(sum / static_cast<Sum>(std::int64_t{window.mask.width} * window.mask.height));
}

/// Integers are exact; sums of floats are rounded.
template <typename T>
constexpr double tolerance = std::is_floating_point_v<T> ? 1e-4 : 0;

std::vector<Window> windowsOfAllKinds() {
    constexpr int huge = std::numeric_limits<int>::max();
    std::vector<Window> windows;
    // Areas on both sides of 257, 2^14, 2^16, 2^24 and 2^35: from there on sums are held in another type.
    for (const auto& [width, height] : {std::pair{1, 1},
                                        {3, 3},
                                        {4, 2},
                                        {1, 8},
                                        {257, 1},
                                        {1, 258},
                                        {2, 129},
                                        {15, 15},
                                        {51, 51},
                                        {127, 129},
                                        {128, 128},
                                        {5, 300},
                                        {256, 256},
                                        {257, 256},
                                        {4097, 4096},
                                        {1000001, 3},
                                        {3, 1000001},
                                        {40000, 900000},
                                        {huge, huge}}) {
        windows.push_back(centred(width, height));
        windows.push_back({{width, height}, {0, height - 1}});
        windows.push_back({{width, height}, {width - 1, height / 3}});
    }
    return windows;
}

template <typename T>
class NppBoxTest : public ::testing::Test {};
using PixelTypes = ::testing::Types<Npp8u, Npp16u, Npp16s, Npp32f>;
TYPED_TEST_SUITE(NppBoxTest, PixelTypes);

TYPED_TEST(NppBoxTest, MeansAreRightForEveryMask) {
    using T = TypeParam;
    unsigned seed = 1;
    for (const NppiSize size : {NppiSize{1, 1}, NppiSize{5, 4}, NppiSize{33, 9}, NppiSize{7, 21}}) {
        for (const Window& window : windowsOfAllKinds()) {
            SCOPED_TRACE(::testing::Message()
                         << size.width << " x " << size.height << ", " << window << ", seed " << ++seed);
            NppImage<T> src(size);
            src.randomise(seed);
            const NppiPoint offset{size.width / 3, size.height / 4};
            NppImage<T> dst({size.width - offset.x, (size.height - offset.y + 1) / 2});
            filter(src, offset, dst, window);
            dst.expectEach([&](T mean, int x, int y) {
                ASSERT_NEAR(mean, plainMean(src, offset.x + x, offset.y + y, window), tolerance<T>) << x << ", " << y;
            });
        }
    }
}

TYPED_TEST(NppBoxTest, ExtremesDoNotOverflow) {
    using T = TypeParam;
    if (std::is_floating_point_v<T>) return;
    for (const T value : {std::numeric_limits<T>::max(), std::numeric_limits<T>::min(), T(1)}) {
        NppImage<T> src({40, 12}, value);
        for (const Window& window : windowsOfAllKinds()) {
            const NppImage<T> dst = filtered(src, window);
            for (int x = 0; x < 40; ++x) ASSERT_EQ(dst.at(x, 7), value) << window;
        }
    }
}

// Wider and taller than the pieces that rows are cut into; no column at their seams is left out.
TYPED_TEST(NppBoxTest, LargeImages) {
    NppImage<TypeParam> src({4500, 260});
    src.randomise(5);
    for (const Window& window : {centred(15, 15), centred(51, 51), centred(3, 40)}) {
        const NppImage<TypeParam> dst = filtered(src, window);
        EXPECT_TRUE(dst.paddingIntact());
        for (int y = 0; y < 260; y += 37) {
            for (int x = 0; x < 4500; ++x) {
                if (x % 67 != 0 && (x + 4) % 1024 > 8 && x < 4495) continue;
                ASSERT_NEAR(dst.at(x, y), plainMean(src, x, y, window), tolerance<TypeParam>) << x << ", " << y;
            }
        }
    }
}

bool sameBits(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// Both ways to cut: a region of the whole image, and a tile with margins as an image of its own.
TEST(NppBoxFloatTest, PartsHaveTheBitsOfTheWhole) {
    NppImage<float> src({311, 257});
    src.randomise(11);
    for (const Window& window :
         {centred(3, 3), centred(4, 6), centred(15, 15), centred(51, 51), centred(63, 2), centred(17, 64)}) {
        const NppImage<float> whole = filtered(src, window);
        for (const NppiPoint origin : {NppiPoint{0, 0}, NppiPoint{1, 3}, NppiPoint{77, 41}, NppiPoint{200, 250}}) {
            NppImage<float> part({std::min(101, 311 - origin.x), std::min(53, 257 - origin.y)});
            const auto expectPart = [&] {
                part.expectEach([&](float mean, int x, int y) {
                    ASSERT_TRUE(sameBits(mean, whole.at(origin.x + x, origin.y + y)))
                        << window << ", " << x << ", " << y;
                });
            };
            filter(src, origin, part, window);
            expectPart();
            const NppiPoint low{std::max(0, origin.x - window.anchor.x), std::max(0, origin.y - window.anchor.y)};
            const NppiPoint high{std::min(311, origin.x + part.size().width + window.anchor.x),
                                 std::min(257, origin.y + part.size().height + window.anchor.y)};
            ASSERT_EQ(nppiFilterBoxBorder_32f_C1R_Ctx(
                          src.device(origin.x, origin.y), src.step(), {high.x - low.x, high.y - low.y},
                          {origin.x - low.x, origin.y - low.y}, part.device(), part.step(), part.size(), window.mask,
                          window.anchor, NPP_BORDER_REPLICATE, {}),
                      NPP_SUCCESS);
            part.download();
            expectPart();
        }
    }
}

TEST(NppBoxFloatTest, NotANumberStaysInItsWindows) {
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        NppImage<float> src({90, 70});
        src.randomise(2);
        const Window window{{21, 10}, {4, 7}};
        const NppImage<float> clean = filtered(src, window);
        src.at(40, 30) = value;
        src.upload();
        const NppImage<float> dst = filtered(src, window);
        dst.expectEach([&](float mean, int x, int y) {
            const bool holds = x - 4 <= 40 && 40 < x - 4 + 21 && y - 7 <= 30 && 30 < y - 7 + 10;
            ASSERT_EQ(!std::isfinite(mean), holds) << x << ", " << y;
            ASSERT_TRUE(holds || sameBits(mean, clean.at(x, y))) << x << ", " << y;
        });
    }
}

// The quotient next to a multiple of the area is where a product with a reciprocal goes wrong.
template <typename Division, typename Pixel, typename Sum>
void expectExactDivision(std::int64_t divisor, std::int64_t quotient) {
    const Division division(static_cast<std::uint64_t>(divisor));
    for (std::int64_t sum = quotient * divisor - 1; sum <= quotient * divisor + 1; ++sum) {
        if (sum < divisor * std::numeric_limits<Pixel>::min() || sum > divisor * std::numeric_limits<Pixel>::max())
            continue;
        ASSERT_EQ(division.template divide<Pixel>(static_cast<Sum>(sum)), sum / divisor) << sum << " / " << divisor;
    }
}

TEST(NppBoxDivisionTest, IsExactAtEveryStep) {
    for (std::int64_t divisor = 1; divisor <= 257; ++divisor) {
        for (std::int64_t q = 0; q <= 255; ++q) {
            expectExactDivision<host::ShortDivision, Npp8u, std::uint16_t>(divisor, q);
        }
    }
    for (std::int64_t divisor = 1; divisor < (1 << 14); divisor += divisor < 400 ? 1 : 13) {
        for (std::int64_t q = 0; q <= 255; ++q) {
            expectExactDivision<host::FloatDivision, Npp8u, std::uint32_t>(divisor, q);
        }
    }
    expectExactDivision<host::FloatDivision, Npp8u, std::uint32_t>((1 << 14) - 1, 255);
    for (const std::int64_t divisor : {1L, 3L, 225L, 2601L, 65536L, 65537L, 16777217L, (1L << 35) - 1}) {
        for (std::int64_t q = 0; q <= 65535; q += 5) {
            if (divisor <= 65536) {
                expectExactDivision<host::DoubleDivision, Npp16u, std::uint32_t>(divisor, q);
                expectExactDivision<host::DoubleDivision, Npp16s, std::uint32_t>(divisor, q - 32768);
            }
            expectExactDivision<host::DoubleDivision, Npp16u, std::uint64_t>(divisor, q);
            expectExactDivision<host::DoubleDivision, Npp16s, std::uint64_t>(divisor, q - 32768);
        }
    }
}

}  // namespace
}  // namespace zel::test
