#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>
#include <vector>

// Filters in their plainest form, for comparison.
namespace zel::test {

/// Voxels without gaps, x fastest.
template <typename T>
struct PlainVolume {
    std::array<std::size_t, 3> size;
    std::vector<T> voxels;
};

/// Offsets along x and y of the pixels that a filter looks at.
using Window = std::vector<std::array<long, 2>>;

/// About the pixel at half its width and height.
inline Window rectangle(long width, long height) {
    Window window;
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x) window.push_back({x - width / 2, y - height / 2});
    return window;
}

inline Window diamond(long radius) {
    Window window = rectangle(2 * radius + 1, 2 * radius + 1);
    std::erase_if(window, [=](const auto& offset) { return std::abs(offset[0]) + std::abs(offset[1]) > radius; });
    return window;
}

/// The pixel at a position of a line whose outermost pixels go on beyond its ends.
inline long edgeRepeated(long position, long length) {
    return std::clamp(position, 0L, length - 1);
}

/// The pixel at a position of a line that goes on mirrored at both ends, the edge pixel not repeated.
inline long mirroredAtEdge(long position, long length) {
    while (position < 0 || position >= length) {
        if (length == 1) return 0;
        position = position < 0 ? -position : 2 * (length - 1) - position;
    }
    return position;
}

/// Each pixel of an image becomes what `fold` makes of those in its window. @param border  one of the two above.
template <typename T, typename Fold>
std::vector<T> plainWindowFilter(const PlainVolume<T>& image, const Window& window, const Fold& fold,
                                 long (*border)(long, long) = edgeRepeated) {
    const auto width = static_cast<long>(image.size[0]), height = static_cast<long>(image.size[1]);
    std::vector<T> result, seen(window.size());
    for (long i = 0; i < width * height; ++i) {
        std::transform(window.begin(), window.end(), seen.begin(), [&](const auto& offset) {
            const long x = border(i % width + offset[0], width), y = border(i / width + offset[1], height);
            return image.voxels[static_cast<std::size_t>(y * width + x)];
        });
        result.push_back(static_cast<T>(fold(seen)));
    }
    return result;
}

/// The pixel at a position of a line that goes on mirrored at both ends, the edge pixel repeated.
inline long mirrored(long position, long length) {
    const long period = 2 * length, wrapped = (position % period + period) % period;
    return std::min(wrapped, period - 1 - wrapped);
}

/// Truncated as a GPU does it: to 32 bits, saturating there; of those the low bits.
template <typename T>
T truncated(float value) {
    if constexpr (std::is_floating_point_v<T>) {
        return value;
    } else {
        using Wide = std::conditional_t<std::is_signed_v<T>, std::int32_t, std::uint32_t>;
        const double low = std::numeric_limits<Wide>::min(), high = std::numeric_limits<Wide>::max();
        return static_cast<T>(static_cast<Wide>(std::clamp<double>(value, low, high)));
    }
}

/// A convolution along an axis, mirrored at the ends; the sum is a float at each tap.
template <typename TOut, typename TIn>
PlainVolume<TOut> plainPass(const PlainVolume<TIn>& in, std::size_t axis, const std::vector<float>& taps) {
    using Factor = std::conditional_t<std::is_same_v<TIn, double>, double, float>;
    PlainVolume<TOut> out{in.size, {}};
    long stride = 1;
    for (std::size_t before = 0; before < axis; ++before) stride *= static_cast<long>(in.size[before]);
    const auto length = static_cast<long>(in.size[axis]), half = static_cast<long>(taps.size() / 2);
    for (long i = 0; i < static_cast<long>(in.voxels.size()); ++i) {
        const long position = i / stride % length;
        float sum = 0;
        for (long k = 0; k < static_cast<long>(taps.size()); ++k) {
            const long at = i + (mirrored(position + k - half, length) - position) * stride;
            const auto pixel = static_cast<Factor>(in.voxels[static_cast<std::size_t>(at)]);
            sum = static_cast<float>(std::fma(pixel, static_cast<Factor>(taps[static_cast<std::size_t>(k)]), sum));
        }
        out.voxels.push_back(truncated<TOut>(sum));
    }
    return out;
}

}  // namespace zel::test
