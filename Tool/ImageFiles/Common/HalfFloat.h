#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace zel::tool {

/// The value of a half-precision number (IEEE 754 binary16).
inline float floatFromHalf(std::uint16_t half) {
    const int sign = (half & 0x8000U) != 0 ? -1 : 1;
    const int exponent = half >> 10U & 0x1FU;
    const int fraction = half & 0x3FFU;
    constexpr int subnormal = 0, special = 31, hidden = 1024;
    using Limits = std::numeric_limits<float>;
    const float magnitude = exponent == special     ? (fraction == 0 ? Limits::infinity() : Limits::quiet_NaN())
                            : exponent == subnormal ? std::ldexp(static_cast<float>(fraction), -24)
                                                    : std::ldexp(static_cast<float>(hidden + fraction), exponent - 25);
    return std::copysign(magnitude, static_cast<float>(sign));
}

}  // namespace zel::tool
