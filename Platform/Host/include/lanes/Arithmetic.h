#pragma once

#include <cuda_runtime.h>

#include <bit>
#include <cmath>
#include <cstdint>

// What lanes compute with where the C library would be called for each lane alone.
namespace zel::cuda {

namespace detail {

/// 2^t rounded to float, by a polynomial of degree 8 over half an octave on both sides of a whole number. In double
/// precision only one value in a thousand is not the nearest float. Plain operations and fma: the same bits in every
/// lane and for every vector length.
__forceinline__ float exp2ToFloat(double t) {
    t = t < -1000.0 ? -1000.0 : t;
    t = t > 1000.0 ? 1000.0 : t;
    constexpr double roundToWhole = 0x1.8p52;  // adding it leaves the nearest whole number in the low bits
    const double shifted = t + roundToWhole;
    const double fraction = t - (shifted - roundToWhole);
    double power = 0x1.63d1355555555p-20;
    power = std::fma(power, fraction, 0x1.00dc4a38e38e4p-16);
    power = std::fma(power, fraction, 0x1.4308ac7fffffep-13);
    power = std::fma(power, fraction, 0x1.5d8745a6f1c73p-10);
    power = std::fma(power, fraction, 0x1.3b2ab718178e3p-7);
    power = std::fma(power, fraction, 0x1.c6b08dd6fda39p-5);
    power = std::fma(power, fraction, 0x1.ebfbdff823ed5p-3);
    power = std::fma(power, fraction, 0x1.62e42fef84ceep-1);
    power = std::fma(power, fraction, 0x1.fffffffffffffp-1);
    const std::uint64_t exponent = (std::bit_cast<std::uint64_t>(shifted) + 1023) << 52;
    return static_cast<float>(power * std::bit_cast<double>(exponent));
}

}  // namespace detail

/// expf(x), up to one unit in the last place.
__forceinline__ float laneExp(float x) {
    constexpr double log2OfE = 0x1.71547652b82fep0;
    return detail::exp2ToFloat(log2OfE * static_cast<double>(x));
}

/// powf(base, exponent) of one base, not negative, up to one unit in the last place.
class FixedBasePower {
public:
    __forceinline__ explicit FixedBasePower(float base) : log2OfBase_(std::log2(static_cast<double>(base))) {}
    __forceinline__ float operator()(float exponent) const {
        return detail::exp2ToFloat(log2OfBase_ * static_cast<double>(exponent));
    }

private:
    double log2OfBase_;
};

/// The value where `keep` is true, else 0. Through the bits, since loops with the plain choice are not vectorised.
__forceinline__ float keepIf(bool keep, float value) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) & (0u - static_cast<std::uint32_t>(keep)));
}

/// a where `first` is true, else b. For running extrema: there the plain choice becomes a store behind a branch.
__forceinline__ float choose(bool first, float a, float b) {
    const std::uint32_t mask = 0u - static_cast<std::uint32_t>(first);
    return std::bit_cast<float>((std::bit_cast<std::uint32_t>(a) & mask) | (std::bit_cast<std::uint32_t>(b) & ~mask));
}
__forceinline__ double choose(bool first, double a, double b) {
    const std::uint64_t mask = 0u - static_cast<std::uint64_t>(first);
    return std::bit_cast<double>((std::bit_cast<std::uint64_t>(a) & mask) | (std::bit_cast<std::uint64_t>(b) & ~mask));
}

}  // namespace zel::cuda
