#pragma once

#include <nppi_filtering_functions.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "NppImage.h"

namespace zel::test {

struct Window {
    NppiSize mask;
    NppiPoint anchor;
};

inline Window centred(int width, int height) {
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
inline std::int64_t timesTaken(std::int64_t i, std::int64_t n, std::int64_t first, std::int64_t count) {
    const std::int64_t low = i == 0 ? std::numeric_limits<std::int32_t>::min() : i;
    const std::int64_t high = i == n - 1 ? std::numeric_limits<std::int64_t>::max() / 2 : i;
    return std::max<std::int64_t>(0, std::min(high, first + count - 1) - std::max(low, first) + 1);
}

/// Sum of the window of source pixel (x, y), pixel by pixel of the image, so that huge masks are quick.
template <typename Sum, typename T>
Sum windowSum(const NppImage<T>& src, int x, int y, const Window& window) {
    const auto [width, height] = src.size();
    Sum sum = 0;
    for (int j = 0; j < height; ++j) {
        const std::int64_t timesY = timesTaken(j, height, std::int64_t{y} - window.anchor.y, window.mask.height);
        if (timesY == 0) continue;
        for (int i = 0; i < width; ++i) {
            const std::int64_t times = timesTaken(i, width, std::int64_t{x} - window.anchor.x, window.mask.width);
            if (times != 0) sum += static_cast<Sum>(times) * static_cast<Sum>(timesY) * static_cast<Sum>(src.at(i, j));
        }
    }
    return sum;
}

inline std::int64_t area(const Window& window) {
    return std::int64_t{window.mask.width} * window.mask.height;
}

inline constexpr int huge = std::numeric_limits<int>::max();

inline std::vector<Window> windowsOfAllKinds() {
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

// Wider and taller than the pieces that rows are cut into.
template <typename T>
void expectLargeImageRight(const Window& window, double tolerance) {
    NppImage<T> src({4500, 260});
    src.randomise(5);
    const NppImage<T> dst = filtered(src, window);
    for (int y = 0; y < 260; y += 37) {
        for (int x = 0; x < 4500; x = x < 40 || x > 4450 ? x + 7 : x + 173) {
            const auto sum = windowSum<double>(src, x, y, window);
            const double mean = sum / static_cast<double>(area(window));
            const double expected = std::is_floating_point_v<T> ? mean : std::trunc(mean);
            ASSERT_NEAR(static_cast<double>(dst.at(x, y)), expected, tolerance) << x << ", " << y;
        }
    }
    EXPECT_TRUE(dst.paddingIntact());
}

}  // namespace zel::test
