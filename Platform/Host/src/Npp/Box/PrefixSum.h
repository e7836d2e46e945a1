#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>
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

/// sums[i] = start + values[i] + ... + values[i + size - 1]. All that is added up on the way are differences of two
/// such sums, so that in floating point nothing rounds where these are exact. In registers both arrays may be touched
/// up to one register beyond their last item.
template <typename Sum>
void slidingSums(const Sum* values, Sum* sums, std::size_t count, std::size_t size, Sum start) {
    Sum sum = start;
    if constexpr (std::is_arithmetic_v<Sum>) {
#pragma omp simd reduction(+ : sum)
        for (std::size_t i = 0; i < size; ++i) sum += values[i];
        sums[0] = sum;
        constexpr std::size_t lanes = Vector<Sum>::lanes;
        using Sums = typename Vector<Sum>::Type;
        Sums before = sum - Sums{};
        for (std::size_t i = 0; i + 1 < count; i += lanes) {
            Sums leaving, entering;
            std::memcpy(&leaving, values + i, sizeof leaving);
            std::memcpy(&entering, values + i + size, sizeof entering);
            const Sums local = detail::scanned<1, lanes>(entering - leaving);
            const Sums all = before + local;
            std::memcpy(sums + i + 1, &all, sizeof all);
            before += detail::lastInAll(local, std::make_index_sequence<lanes>());
        }
    } else {
        for (std::size_t i = 0; i < size; ++i) sum = sum + values[i];
        sums[0] = sum;
        for (std::size_t i = 0; i + 1 < count; ++i) sums[i + 1] = sum = sum + values[i + size] - values[i];
    }
}

}  // namespace zel::host
