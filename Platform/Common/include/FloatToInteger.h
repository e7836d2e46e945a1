#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>

/// Float to integer as a GPU converts: toward zero, saturating at 32 (or 64) bits, NaN gives 0. Plain C++ leaves all
/// but the truncation undefined. The 32-bit forms are free of branches, so that loops over them vectorise; a clamp is
/// written `value > low ? value : low` so that NaN takes the bound and never reaches a conversion.
namespace zel {

constexpr std::int32_t truncateToInt32(float value) {
    constexpr float low = -0x1p31f;
    constexpr float high = 0x1.fffffep30f;  // the last float below 2^31
    const float raised = value > low ? value : low;
    const float clamped = raised < high ? raised : high;
    const std::int32_t saturated = static_cast<std::int32_t>(clamped) + 127 * (value >= 0x1p31f);
    return saturated & -static_cast<std::int32_t>(value == value);
}

constexpr std::int32_t truncateToInt32(double value) {
    constexpr double low = -0x1p31;
    constexpr double high = 0x1p31 - 1;
    const double raised = value > low ? value : low;
    const double clamped = raised < high ? raised : high;
    return static_cast<std::int32_t>(clamped) & -static_cast<std::int32_t>(value == value);
}

namespace detail {

/// [0, 2^32) by way of a signed conversion, which every vector unit has.
template <std::floating_point Float>
constexpr std::uint32_t halvedToUint32(Float inRange) {
    constexpr Float half = static_cast<Float>(0x1p31);
    const auto upper = static_cast<std::uint32_t>(inRange >= half);
    const Float lowered = inRange - (inRange >= half ? half : Float{0});
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(lowered)) + (upper << 31);
}

}  // namespace detail

constexpr std::uint32_t truncateToUint32(float value) {
    constexpr float high = 0x1.fffffep31f;  // the last float below 2^32
    const float raised = value > 0.0f ? value : 0.0f;
    const float clamped = raised < high ? raised : high;
    return detail::halvedToUint32(clamped) + 255u * static_cast<std::uint32_t>(value >= 0x1p32f);
}

constexpr std::uint32_t truncateToUint32(double value) {
    constexpr double high = 0x1p32 - 1;
    const double raised = value > 0.0 ? value : 0.0;
    return detail::halvedToUint32(raised < high ? raised : high);
}

namespace detail {

template <class To, std::floating_point Float>
constexpr To truncateTo64(Float value) {
    constexpr Float low = static_cast<Float>(std::numeric_limits<To>::min());
    constexpr Float end = static_cast<Float>(std::is_signed_v<To> ? 0x1p63 : 0x1p64);
    if (value >= end) return std::numeric_limits<To>::max();
    if (value > low) return static_cast<To>(value);
    return value == value ? std::numeric_limits<To>::min() : To{0};
}

}  // namespace detail

/// To `To` through the 32-bit integer of its signedness, of which the low bits are kept; 64-bit integers saturate.
template <std::integral To, std::floating_point From>
constexpr To truncateTo(From value) {
    if constexpr (sizeof(To) > sizeof(std::int32_t))
        return detail::truncateTo64<To>(value);
    else if constexpr (std::is_signed_v<To>)
        return static_cast<To>(truncateToInt32(value));
    else
        return static_cast<To>(truncateToUint32(value));
}

}  // namespace zel
