#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace zel::host {

// Sums of floats as sums of doubles that never round. A double is exact for multiples of a power of two, its unit, up
// to 2^53 units. Where the exponents of pixels differ too much for that, each is split into parts with units of their
// own, and so are the sums.

/// The binary exponents of the finite pixels that are looked at.
class FloatSpread {
public:
    void add(const float* pixels, std::ptrdiff_t count) {
        const Magnitudes before = seen_;
        add(pixels, count, [](std::uint32_t magnitude) { return magnitude; });
        if (seen_.largest < infinity) return;
        seen_ = before;
        allFinite_ = false;
        add(pixels, count, [](std::uint32_t magnitude) { return magnitude < infinity ? magnitude : 0; });
    }

    bool allFinite() const { return allFinite_; }
    /// All pixels lie below 2^(this + 1) in magnitude.
    int exponent() const { return exponentOf(seen_.largest); }
    /// All pixels are multiples of 2^this.
    int unit() const { return exponentOf(seen_.lowestBitLess1 + 1); }

private:
    /// As the bits of floats, which stand in the order of these.
    struct Magnitudes {
        std::uint32_t largest = 0;
        std::uint32_t lowestBitLess1 = std::numeric_limits<std::uint32_t>::max();  // 0, which has no bit, comes last
    };
    static constexpr std::uint32_t infinity = 0x7F800000;

    template <typename Seen>
    void add(const float* pixels, std::ptrdiff_t count, const Seen& seen) {
        auto [largest, lowest] = seen_;
#pragma omp simd reduction(max : largest) reduction(min : lowest)
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const std::uint32_t magnitude = seen(std::bit_cast<std::uint32_t>(pixels[i]) & 0x7FFFFFFF);
            largest = std::max(largest, magnitude);
            lowest = std::min(lowest, lowestBit(magnitude) - 1);
        }
        seen_ = {largest, lowest};
    }

    /// The lowest bit set in a float's value, or in its lower half where that is a power of two; 0 of 0. Without its
    /// lowest bit a mantissa leaves just that when subtracted; one that is 0 makes the exponent lose a bit instead.
    static std::uint32_t lowestBit(std::uint32_t magnitude) {
        return std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) -
                                            std::bit_cast<float>(magnitude & (magnitude - 1)));
    }

    static int exponentOf(std::uint32_t magnitude) {
        if (magnitude == 0) return -149;
        return magnitude >= 0x800000 ? static_cast<int>(magnitude >> 23) - 127 : std::bit_width(magnitude) - 150;
    }

    Magnitudes seen_;
    bool allFinite_ = true;
};

/// Units of the parts that pixels of such exponents need in sums of windows of that area. What is added up in running
/// sums are window sums and differences of two, at most 2 * area times the largest pixel of a part: that gives the
/// first unit. What is left of a pixel is at most half a unit: that gives the next one.
class FloatUnits {
public:
    FloatUnits(const FloatSpread& spread, std::uint64_t area)
        : areaBits_(std::max(static_cast<int>(std::bit_width(area - 1)), 1)),
          first_(spread.exponent() + 2 + areaBits_ - 53) {
        while (parts_ <= maxParts && unit(parts_ - 1) > spread.unit()) ++parts_;
    }

    static constexpr std::size_t maxParts = 8;

    /// Above maxParts if not even these hold the pixels.
    std::size_t parts() const { return parts_; }
    /// Unit of a part, from the highest one on.
    int unit(std::size_t part) const { return first_ - static_cast<int>(part) * (53 - areaBits_); }

private:
    int areaBits_;
    int first_;
    std::size_t parts_ = 1;
};

/// a + b, truncated to a double, with its last bit set if it is not exact. Rounding that to float gives what rounding
/// a + b does (Boldo and Melquiond, 2008).
inline double addToOdd(double a, double b) {
    const double sum = a + b;
    const double bOfSum = sum - a;
    const double rest = (a - (sum - bOfSum)) + (b - bOfSum);  // a + b = sum + rest, exactly
    const auto bits = std::bit_cast<std::int64_t>(sum);
    const std::int64_t inexact = rest != 0.0 ? 1 : 0;
    const std::int64_t pastIt = ((bits ^ std::bit_cast<std::int64_t>(rest)) < 0 ? 1 : 0) & inexact;
    return std::bit_cast<double>((bits - pastIt) | inexact);
}

/// Splits floats into parts that add up to them, each a multiple of its unit, and puts sums of the parts together.
template <std::size_t parts>
class FloatParts {
public:
    using Values = std::array<double, parts>;

    explicit FloatParts(const FloatUnits& units) {
        for (std::size_t i = 0; i + 1 < parts; ++i) nearest_[i] = Nearest(units.unit(i));
    }

    Values split(float pixel) const { return split(pixel, std::make_index_sequence<parts - 1>()); }

    /// The float nearest to the sum of the parts' sums under a window.
    float round(const Values& sums) const { return round(sums, std::make_index_sequence<parts - 1>()); }

private:
    /// The nearest multiple of a unit to values up to 2^51 units: a number whose last place is the unit keeps nothing
    /// below it.
    class Nearest {
    public:
        Nearest() = default;
        explicit Nearest(int unit) : shift_(std::ldexp(1.5, unit + 52)) {}
        double operator()(double value) const { return (value + shift_) - shift_; }

    private:
        double shift_ = 0;
    };

    // Loops over parts are written as folds, for loops around them to become SIMD.

    template <std::size_t... i>
    Values split(double rest, std::index_sequence<i...>) const {
        [[maybe_unused]] const auto take = [&](const Nearest& nearest) {
            const double part = nearest(rest);
            rest -= part;
            return part;
        };
        return {take(nearest_[i])..., rest};
    }

    template <std::size_t... i>
    float round(Values sums, std::index_sequence<i...>) const {
        constexpr std::size_t last = parts - 1;
        // What a sum holds beyond its part goes over to the next higher one. Then each is above all those below it
        // together, and the sum is as exact as its highest part.
        [[maybe_unused]] const auto carry = [&](double& higher, double& lower, const Nearest& nearest) {
            const double over = nearest(lower);
            lower -= over;
            higher += over;
        };
        if constexpr (parts > 2) (carry(sums[last - 1 - i], sums[last - i], nearest_[last - 1 - i]), ...);
        double sum = sums[last];
        ((sum = addToOdd(sums[last - 1 - i], sum)), ...);
        return static_cast<float>(sum);
    }

    std::array<Nearest, parts> nearest_;
};

}  // namespace zel::host
