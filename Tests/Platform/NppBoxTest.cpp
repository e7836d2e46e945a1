#include <host_device.h>
#include <nppi_filtering_functions.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "Npp/Box/BoxDivision.h"
#include "NppImage.h"

namespace zel::test {
namespace {

using Window = NppWindow;

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

/// Filters the region of dst's size at `origin` of src. The source image is what lies between two corners of src,
/// without them the whole.
template <typename T>
void filter(NppImage<T>& src, NppiPoint origin, NppImage<T>& dst, const Window& window, NppiPoint low = {0, 0},
            NppiPoint high = {0, 0}) {
    if (high.x == 0) high = {src.size().width, src.size().height};
    ASSERT_EQ(boxFunction<T>()(src.device(origin.x, origin.y), src.step(), {high.x - low.x, high.y - low.y},
                               {origin.x - low.x, origin.y - low.y}, dst.device(), dst.step(), dst.size(), window.mask,
                               window.anchor, NPP_BORDER_REPLICATE, {}),
              NPP_SUCCESS);
    dst.download();
}

/// How many of the positions first ... first + count - 1 take pixel i of n.
std::int64_t timesTaken(std::int64_t i, std::int64_t n, std::int64_t first, std::int64_t count) {
    const auto before = [&](std::int64_t position) { return std::clamp<std::int64_t>(position - first, 0, count); };
    return (i == n - 1 ? count : before(i + 1)) - (i == 0 ? 0 : before(i));
}

/// Mean of the window of source pixel (x, y), truncated for integers; summed pixel by pixel of the image, so that huge
/// masks are quick.
template <typename T>
T plainMean(const NppImage<T>& src, int x, int y, const Window& window) {
    using Sum = std::conditional_t<std::is_floating_point_v<T>, double, host::Signed128>;
    const auto [width, height] = src.size();
    const auto& [mask, anchor] = window;
    Sum sum = 0;
    for (int j = 0; j < height; ++j) {
        const std::int64_t rows = timesTaken(j, height, y - anchor.y, mask.height);
        for (int i = 0; i < width; ++i)
            sum += static_cast<Sum>(rows) * static_cast<Sum>(timesTaken(i, width, x - anchor.x, mask.width)) *
                   static_cast<Sum>(src.at(i, j));
    }
    return static_cast<T>(sum / static_cast<Sum>(std::int64_t{mask.width} * mask.height));
}

std::vector<Window> windowsOfAllKinds() {
    constexpr int huge = std::numeric_limits<int>::max();
    std::vector<Window> windows;
    // Areas on both sides of 257, 2^14, 2^16, 2^24 and 2^35: from there on sums are held in another type.
    constexpr NppiSize sizes[] = {{1, 1},       {3, 3},       {4, 2},          {1, 8},      {257, 1},
                                  {1, 258},     {2, 129},     {15, 15},        {51, 51},    {127, 129},
                                  {128, 128},   {5, 300},     {256, 256},      {257, 256},  {4097, 4096},
                                  {1000001, 3}, {3, 1000001}, {40000, 900000}, {huge, huge}};
    for (const auto& [width, height] : sizes) {
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

// Each window meets random pixels and, of integers, the extreme ones, whose sums are the first to overflow.
TYPED_TEST(NppBoxTest, MeansAreRightForEveryMask) {
    using T = TypeParam;
    constexpr bool isInteger = !std::is_floating_point_v<T>;
    unsigned seed = 1;
    for (const NppiSize size : {NppiSize{1, 1}, NppiSize{5, 4}, NppiSize{33, 9}, NppiSize{7, 21}}) {
        for (const Window& window : windowsOfAllKinds()) {
            SCOPED_TRACE(::testing::Message()
                         << size.width << " x " << size.height << ", " << window << ", seed " << ++seed);
            auto src = NppImage<T>::random(size, seed);
            if (isInteger && seed % 4 < 2)
                src = NppImage<T>(size, seed % 4 == 0 ? std::numeric_limits<T>::max() : std::numeric_limits<T>::min());
            const NppiPoint offset{size.width / 3, size.height / 4};
            NppImage<T> dst({size.width - offset.x, (size.height - offset.y + 1) / 2});
            filter(src, offset, dst, window);
            dst.expectEach([&](T mean, int x, int y) {
                ASSERT_NEAR(mean, plainMean(src, offset.x + x, offset.y + y, window), isInteger ? 0 : 1e-4);
            });
        }
    }
}

// Of an image larger than the pieces that rows are cut into. Both ways to cut: a region of the whole image, and a tile
// with margins as an image of its own.
TYPED_TEST(NppBoxTest, PartsHaveTheBitsOfTheWhole) {
    using T = TypeParam;
    constexpr int width = 4500, height = 260;
    auto src = NppImage<T>::random({width, height}, 11);
    NppImage<T> whole(src.size());
    for (const Window& window :
         {centred(3, 3), centred(4, 6), centred(15, 15), centred(51, 51), centred(63, 2), centred(17, 64)}) {
        SCOPED_TRACE(::testing::Message() << window);
        const NppiPoint anchor = window.anchor;
        filter(src, {0, 0}, whole, window);
        whole.expectEach([](T, int, int) {});
        for (int top = 0; top < height; top += 53)
            for (int left = 0; left < width; left += 901) {
                NppImage<T> region({std::min(901, width - left), std::min(53, height - top)}), tile(region.size());
                filter(src, {left, top}, region, window);
                filter(src, {left, top}, tile, window, {std::max(0, left - anchor.x), std::max(0, top - anchor.y)},
                       {std::min(width, left + 901 + anchor.x), std::min(height, top + 53 + anchor.y)});
                for (int y = 0; y < tile.size().height; ++y)
                    for (const auto* part : {&region, &tile})
                        ASSERT_EQ(std::memcmp(&part->at(0, y), &std::as_const(whole).at(left, top + y),
                                              sizeof(T) * static_cast<std::size_t>(tile.size().width)),
                                  0)
                            << left << ", " << top + y;
            }
    }
}

TEST(NppBoxFloatTest, NotANumberStaysInItsWindows) {
    const Window window{{21, 10}, {4, 7}};
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
        for (const NppiPoint at : {NppiPoint{40, 30}, NppiPoint{0, 69}}) {
            auto src = NppImage<float>::random({90, 70}, 2);
            NppImage<float> clean(src.size()), dst(src.size());
            filter(src, {0, 0}, clean, window);
            src.at(at.x, at.y) = value;
            src.upload();
            filter(src, {0, 0}, dst, window);
            dst.expectEach([&](float mean, int x, int y) {
                const int column = at.x - x + window.anchor.x, row = at.y - y + window.anchor.y;
                const bool holds = column >= 0 && column < 21 && row >= 0 && row < 10;
                ASSERT_TRUE(holds ? !std::isfinite(mean) : mean == clean.at(x, y)) << x << ", " << y;
            });
        }
}

/// Of the sums around each multiple of the area that gives a pixel, or each one in so many: there a product with a
/// reciprocal goes wrong.
template <typename Division, typename Pixel, typename Sum>
void expectExact(std::int64_t area, int step = 1) {
    const Division division(static_cast<std::uint64_t>(area));
    constexpr std::int64_t low = std::numeric_limits<Pixel>::min(), high = std::numeric_limits<Pixel>::max();
    for (std::int64_t q = low; q <= high; q += step)
        for (std::int64_t sum = std::max(q * area - 1, low * area); sum <= std::min(q * area + 1, high * area); ++sum)
            ASSERT_EQ(division.template divide<Pixel>(static_cast<Sum>(sum)), sum / area) << sum << " / " << area;
}

TEST(NppBoxDivisionTest, IsExactAtEveryStep) {
    using namespace host;
    for (std::int64_t area = 1; area <= 257; ++area) expectExact<ShortDivision, Npp8u, std::uint16_t>(area);
    for (std::int64_t area = 1; area < 400; ++area) expectExact<FloatDivision, Npp8u, std::uint32_t>(area);
    for (std::int64_t area = FloatDivision::maxArea; area > 400; area -= 13)
        expectExact<FloatDivision, Npp8u, std::uint32_t>(area);
    for (const std::int64_t area : {1L, 3L, 225L, 2601L, 65536L, 65537L, 16777217L, (1L << 35) - 1}) {
        if (area <= 65536) expectExact<DoubleDivision, Npp16u, std::uint32_t>(area, 5);
        if (area <= 65536) expectExact<DoubleDivision, Npp16s, std::uint32_t>(area, 5);
        expectExact<DoubleDivision, Npp16u, std::uint64_t>(area, 5);
        expectExact<DoubleDivision, Npp16s, std::uint64_t>(area, 5);
    }
}

}  // namespace
}  // namespace zel::test
