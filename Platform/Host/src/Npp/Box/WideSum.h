#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Npp/Box/BoxDivision.h"

namespace zel::host {

/// A sum of floats without rounding: an integer in units of the smallest float, 2^-149. The largest float is below
/// 2^277 of them, so that 2^106 floats find room.
class WideSum {
public:
    WideSum() = default;
    explicit WideSum(std::uint64_t units) : limbs_{units} {}
    /// @param value  finite.
    explicit WideSum(float value) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        const std::uint32_t exponent = (bits >> 23) & 0xFF;
        const std::uint64_t mantissa = (bits & 0x7FFFFF) | (exponent == 0 ? 0U : 0x800000U);
        const std::uint32_t shift = exponent == 0 ? 0 : exponent - 1;
        const Unsigned128 shifted = Unsigned128{mantissa} << (shift % 64);
        limbs_[shift / 64] = static_cast<std::uint64_t>(shifted);
        limbs_[shift / 64 + 1] = static_cast<std::uint64_t>(shifted >> 64);
        if (bits >> 31 != 0) *this = WideSum() - *this;
    }

    friend WideSum operator+(WideSum a, const WideSum& b) {
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < limbCount; ++i) {
            const Unsigned128 sum = Unsigned128{a.limbs_[i]} + b.limbs_[i] + carry;
            a.limbs_[i] = static_cast<std::uint64_t>(sum);
            carry = static_cast<std::uint64_t>(sum >> 64);
        }
        return a;
    }
    friend WideSum operator-(WideSum a, const WideSum& b) {
        std::uint64_t borrow = 0;
        for (std::size_t i = 0; i < limbCount; ++i) {
            const Unsigned128 difference = Unsigned128{a.limbs_[i]} - b.limbs_[i] - borrow;
            a.limbs_[i] = static_cast<std::uint64_t>(difference);
            borrow = static_cast<std::uint64_t>(difference >> 64) & 1;
        }
        return a;
    }
    /// @param times  a whole number in the lowest limb.
    friend WideSum operator*(const WideSum& times, WideSum value) {
        std::uint64_t carry = 0;
        for (std::uint64_t& limb : value.limbs_) {
            const Unsigned128 product = Unsigned128{limb} * times.limbs_[0] + carry;
            limb = static_cast<std::uint64_t>(product);
            carry = static_cast<std::uint64_t>(product >> 64);
        }
        return value;
    }

    /// The nearest float, the even one of two; beyond the largest an infinity.
    explicit operator float() const {
        const bool negative = limbs_.back() >> 63 != 0;
        const WideSum magnitude = negative ? WideSum() - *this : *this;
        std::size_t top = limbCount - 1;
        while (top > 0 && magnitude.limbs_[top] == 0) --top;
        // The highest 64 bits, the last one set if anything is left below: the conversion then rounds as the whole
        // would.
        std::uint64_t high = magnitude.limbs_[top];
        int exponent = static_cast<int>(64 * top) - 149;
        if (top > 0) {
            const int room = std::countl_zero(high);
            const std::uint64_t next = magnitude.limbs_[top - 1];
            bool rest = next << room != 0;
            if (room > 0) high = high << room | next >> (64 - room);
            for (std::size_t i = 0; i + 1 < top; ++i) rest |= magnitude.limbs_[i] != 0;
            high |= rest ? 1 : 0;
            exponent -= room;
        }
        const float value = std::ldexp(static_cast<float>(high), exponent);
        return negative ? -value : value;
    }

private:
    static constexpr std::size_t limbCount = 6;
    std::array<std::uint64_t, limbCount> limbs_{};  // two's complement, lowest first
};

}  // namespace zel::host
