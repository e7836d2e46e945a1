#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

namespace zel::host {

/// As many T as one SIMD register of the target holds.
template <typename T>
struct Vector {
    static constexpr std::size_t lanes = __BIGGEST_ALIGNMENT__ / sizeof(T);
    using Type [[gnu::vector_size(__BIGGEST_ALIGNMENT__)]] = T;
};

namespace detail {

template <std::size_t shift, typename Type, std::size_t... lane>
Type shiftedUp(Type values, std::index_sequence<lane...>) {
    constexpr std::size_t lanes = sizeof...(lane);
    return __builtin_shufflevector(Type{}, values, (lane < shift ? lane : lanes + lane - shift)...);
}

template <typename Type, std::size_t... lane>
Type lastInAll(Type values, std::index_sequence<lane...>) {
    return __builtin_shufflevector(values, values, (lane - lane + sizeof...(lane) - 1)...);
}

/// Running sums within one register.
template <std::size_t shift, std::size_t lanes, typename Type>
Type scanned(Type values) {
    if constexpr (shift < lanes) {
        return scanned<2 * shift, lanes>(values + shiftedUp<shift>(values, std::make_index_sequence<lanes>()));
    } else {
        return values;
    }
}

}  // namespace detail

/// sums[i] = values[0] + ... + values[i], modulo 2^bits of the unsigned Sum. Works in whole registers: both arrays may
/// be touched up to one register beyond `count`.
template <typename Value, typename Sum>
void prefixSum(const Value* values, Sum* sums, std::size_t count) {
    if constexpr (sizeof(Sum) > sizeof(std::size_t)) {
        Sum sum = 0;
        for (std::size_t i = 0; i < count; ++i) sums[i] = sum += values[i];
    } else {
        constexpr std::size_t lanes = Vector<Sum>::lanes;
        using Sums = typename Vector<Sum>::Type;
        using Values [[gnu::vector_size(lanes * sizeof(Value))]] = Value;
        Sums before{};
        for (std::size_t i = 0; i < count; i += lanes) {
            Values loaded;
            std::memcpy(&loaded, values + i, sizeof loaded);
            const Sums local = detail::scanned<1, lanes>(__builtin_convertvector(loaded, Sums));
            const Sums all = before + local;
            std::memcpy(sums + i, &all, sizeof all);
            // Off the local sums, so that register follows register by one addition.
            before += detail::lastInAll(local, std::make_index_sequence<lanes>());
        }
    }
}

}  // namespace zel::host
