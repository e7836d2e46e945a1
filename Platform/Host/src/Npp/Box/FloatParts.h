#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "Npp/Box/FloatSpread.h"
#include "Npp/Box/PrefixSum.h"

namespace zel::host {

// Sums of floats as sums of doubles that never round. A double is exact for multiples of a power of two, its unit, up
// to 2^53 units. Where the exponents of pixels differ too much for that, each is split into parts with units of their
// own, and so are the sums.

/// Units of the parts that pixels of such exponents need in sums of windows of that area. What is added up in running
/// sums are window sums and differences of two, at most 2 * area times the largest pixel of a part: that gives the
/// first unit. What is left of a pixel is at most half a unit: that gives the next one.
class FloatUnits {
public:
    FloatUnits(const FloatSpread& spread, std::uint64_t area)
        : exponent_(spread.exponent()),
          areaBits_(std::max(static_cast<int>(std::bit_width(area - 1)), 1)),
          parts_(partsFor(spread)) {}

    static constexpr std::size_t maxParts = 8;

    /// Above maxParts if not even these hold the pixels.
    std::size_t parts() const { return parts_; }
    /// Unit of a part, from the highest one on.
    int unit(std::size_t part) const {
        return exponent_ + 2 + areaBits_ - 53 - static_cast<int>(part) * (53 - areaBits_);
    }

    /// Whether so many parts of these units hold other pixels.
    bool hold(const FloatSpread& spread, std::size_t parts) const {
        return spread.allFinite() && spread.exponent() <= exponent_ && partsFor(spread) <= parts;
    }

private:
    std::size_t partsFor(const FloatSpread& spread) const {
        std::size_t parts = 1;
        while (parts <= maxParts && unit(parts - 1) > spread.unit()) ++parts;
        return parts;
    }

    int exponent_;
    int areaBits_;
    std::size_t parts_;
};

using Doubles = Vector<double>::Type;

/// a + b, truncated to doubles, with the last bit set where that is not exact. Rounding it to float gives what rounding
/// a + b does (Boldo and Melquiond, 2008).
inline Doubles addToOdd(Doubles a, Doubles b) {
    using Bits = Vector<std::int64_t>::Type;
    const Doubles sum = a + b;
    const Doubles bOfSum = sum - a;
    const Doubles rest = (a - (sum - bOfSum)) + (b - bOfSum);  // a + b = sum + rest, exactly
    const auto bits = std::bit_cast<Bits>(sum);
    const Bits inexact = (rest != Doubles{}) & 1;
    const Bits pastIt = ((bits ^ std::bit_cast<Bits>(rest)) < 0) & inexact;
    return std::bit_cast<Doubles>((bits - pastIt) | inexact);
}

using Floats = Vector<float>::Type;

namespace detail {

template <std::size_t... lane>
Floats roundedToFloat(Doubles low, Doubles high, std::index_sequence<lane...>) {
    using Half [[gnu::vector_size(sizeof(Floats) / 2)]] = float;
    return __builtin_shufflevector(__builtin_convertvector(low, Half), __builtin_convertvector(high, Half), lane...);
}

}  // namespace detail

inline Floats roundedToFloat(Doubles low, Doubles high) {
    return detail::roundedToFloat(low, high, std::make_index_sequence<Vector<float>::lanes>());
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

    /// Of the sums of the parts under some windows their sum, which is exact once rounded to float.
    Doubles sum(const std::array<Doubles, parts>& sums) const {
        return sum(sums, std::make_index_sequence<parts - 1>());
    }

private:
    /// The nearest multiple of a unit to values up to 2^51 units: a number whose last place is the unit keeps nothing
    /// below it.
    class Nearest {
    public:
        Nearest() = default;
        explicit Nearest(int unit) : shift_(std::ldexp(1.5, unit + 52)) {}
        template <typename Value>
        Value operator()(Value value) const {
            return (value + shift_) - shift_;
        }

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
    Doubles sum(std::array<Doubles, parts> sums, std::index_sequence<i...>) const {
        constexpr std::size_t last = parts - 1;
        // What a sum holds beyond its part goes over to the next higher one. Then each is above all those below it
        // together, and the sum is as exact as its highest part.
        [[maybe_unused]] const auto carry = [&](Doubles& higher, Doubles& lower, const Nearest& nearest) {
            const Doubles over = nearest(lower);
            lower -= over;
            higher += over;
        };
        if constexpr (parts > 2) (carry(sums[last - 1 - i], sums[last - i], nearest_[last - 1 - i]), ...);
        Doubles all = sums[last];
        ((all = addToOdd(sums[last - 1 - i], all)), ...);
        return all;
    }

    std::array<Nearest, parts> nearest_;
};

}  // namespace zel::host
