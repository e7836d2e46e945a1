#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace zel::test {

/// A sum of floats without rounding: a whole number of the smallest floats, 2^-149, in digits to base 2^32 that carry
/// at the end only. Infinities and NaN add up as usual.
class ExactSum {
public:
    void add(float value, std::int64_t times = 1) {
        if (times == 0) return;
        if (!std::isfinite(value)) {
            special_ += value;
            return;
        }
        int exponent = 0;
        const float fraction = std::frexp(value, &exponent);
        const int place = std::max(exponent + 149 - 24, 0);
        const auto units = static_cast<std::int64_t>(std::ldexp(fraction, exponent + 149 - place));
        digits_[static_cast<std::size_t>(place / 32)] += Digit{units} * times * (Digit{1} << place % 32);
    }

    /// The nearest float, the even one of two.
    float rounded() const {
        if (special_ != 0) return special_;
        const bool negative = carried(digits_, 1).rest < 0;
        const Digits digits = carried(digits_, negative ? -1 : 1).digits;
        const auto bit = [&](int i) { return static_cast<std::uint32_t>(digits[i / 32U] >> i % 32U) & 1; };
        int top = 32 * static_cast<int>(digits.size()) - 1;
        while (top > 0 && bit(top) == 0) --top;
        const int last = std::max(top - 23, 0);
        std::uint32_t mantissa = 0;
        for (int i = top; i >= last; --i) mantissa = 2 * mantissa + bit(i);
        bool more = false;
        for (int i = 0; i + 1 < last; ++i) more |= bit(i) != 0;
        if (last > 0 && bit(last - 1) != 0 && (more || mantissa % 2 != 0)) ++mantissa;
        const float magnitude = std::ldexp(static_cast<float>(mantissa), last - 149);
        return negative ? -magnitude : magnitude;
    }

private:
    __extension__ using Digit = __int128;
    using Digits = std::array<Digit, 13>;
    struct Carried {
        Digits digits;
        Digit rest;
    };

    static Carried carried(Digits digits, Digit sign) {
        Digit carry = 0;
        for (Digit& digit : digits) {
            carry += sign * digit;
            digit = carry & 0xFFFFFFFF;
            carry >>= 32;
        }
        return {digits, carry};
    }

    Digits digits_{};
    float special_ = 0;
};

}  // namespace zel::test
