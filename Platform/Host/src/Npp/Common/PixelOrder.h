#pragma once

#include <bit>
#include <cstdint>
#include <limits>

namespace zel::host {

/// What erosion (of the smallest) and dilation (of the largest) compare: integers are their own keys.
template <typename T, bool ofLargest>
struct PixelOrder {
    using Pixel = T;
    using Key = T;

    static Key keyOf(Pixel pixel) { return pixel; }
    static Pixel pixelOf(Key key) { return key; }
    static Key best(Key a, Key b) {
        if constexpr (ofLargest) return a > b ? a : b;
        return a < b ? a : b;
    }
    /// The best of no pixels.
    static constexpr Key none = ofLargest ? std::numeric_limits<Key>::min() : std::numeric_limits<Key>::max();
};

/// Floats are compared as integers of the same order, in which -0 lies below +0 and NaN loses against every number: so
/// the best of several pixels has the same bits in whichever order they are met. The best of no numbers is NaN.
template <bool ofLargest>
struct PixelOrder<float, ofLargest> : PixelOrder<std::int32_t, ofLargest> {
    using Pixel = float;
    using Key = std::int32_t;

    static Key keyOf(Pixel pixel) {
        constexpr std::int32_t infinity = 0x7F800000;
        const auto bits = std::bit_cast<std::int32_t>(pixel);
        return (bits & magnitude) > infinity ? PixelOrder<std::int32_t, ofLargest>::none : reversedBelowZero(bits);
    }
    static Pixel pixelOf(Key key) { return std::bit_cast<float>(reversedBelowZero(key)); }

private:
    static constexpr std::int32_t magnitude = 0x7FFFFFFF;

    /// Its own inverse.
    static std::int32_t reversedBelowZero(std::int32_t bits) { return bits ^ ((bits >> 31) & magnitude); }
};

}  // namespace zel::host
