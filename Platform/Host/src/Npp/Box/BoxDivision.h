#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

namespace zel::host {

// Divisions of window sums by the window's area: exact, truncated toward zero, and each one a few SIMD instructions.

__extension__ using Signed128 = __int128;
__extension__ using Unsigned128 = unsigned __int128;

/// For sums below 2^16. The product with the reciprocal rounded down gives the quotient or one less: the reciprocal
/// misses 2^16 / area by at most 1, hence the quotient by less than 1.
class ShortDivision {
public:
    explicit ShortDivision(std::uint64_t area)
        : area_(static_cast<std::uint16_t>(area)), reciprocal_(static_cast<std::uint16_t>(0xFFFF / area)) {}

    template <typename Pixel>
    Pixel divide(std::uint16_t sum) const {
        const auto low = static_cast<std::uint16_t>((std::uint32_t{sum} * reciprocal_) >> 16);
        const auto rest = static_cast<std::uint16_t>(sum - std::uint32_t{low} * area_);
        return static_cast<Pixel>(low + (rest >= area_ ? 1 : 0));
    }

private:
    std::uint16_t area_;
    std::uint16_t reciprocal_;
};

/// For 8-bit pixels and areas below 2^14. (sum + 1/2) / area lies more than 2^-15 from the nearest integer, the two
/// roundings of a quotient below 2^8 miss by less, and sum + 1/2 is exact.
class FloatDivision {
public:
    static constexpr std::uint64_t maxArea = (std::uint64_t{1} << 14) - 1;

    explicit FloatDivision(std::uint64_t area) : reciprocal_(1.0f / static_cast<float>(area)) {}

    template <typename Pixel>
    Pixel divide(std::uint32_t sum) const {
        const float shifted = static_cast<float>(static_cast<std::int32_t>(sum)) + 0.5f;
        return static_cast<Pixel>(static_cast<std::int32_t>(shifted * reciprocal_));
    }

private:
    float reciprocal_;
};

/// For areas below 2^35 and quotients below 2^16 in magnitude, by the same argument: the distance is above 2^-36, the
/// two roundings miss by less, and a sum below 2^51 leaves room for the half.
class DoubleDivision {
public:
    static constexpr std::uint64_t maxArea = (std::uint64_t{1} << 35) - 1;

    explicit DoubleDivision(std::uint64_t area) : reciprocal_(1.0 / static_cast<double>(area)) {}

    template <typename Pixel, typename Sum>
    Pixel divide(Sum sum) const {
        if constexpr (std::is_signed_v<Pixel>) {
            const auto value = static_cast<double>(static_cast<std::make_signed_t<Sum>>(sum));
            return static_cast<Pixel>(static_cast<std::int32_t>((value + std::copysign(0.5, value)) * reciprocal_));
        } else {
            return static_cast<Pixel>(static_cast<std::int32_t>((static_cast<double>(sum) + 0.5) * reciprocal_));
        }
    }

private:
    double reciprocal_;
};

/// For any sum of 16-bit pixels.
class WideDivision {
public:
    explicit WideDivision(std::uint64_t area) : area_(area) {}

    template <typename Pixel>
    Pixel divide(Unsigned128 sum) const {
        return static_cast<Pixel>(static_cast<Signed128>(sum) / area_);
    }

private:
    Signed128 area_;
};

}  // namespace zel::host
