#pragma once

#include <cstddef>

namespace zel::host {

namespace detail {

/// sums[i] (+)= values[i] + ... + values[i + (terms - 1) * stride].
template <std::size_t terms, bool first>
void addTerms(const float* values, float* sums, std::size_t count, std::size_t stride) {
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        float sum = values[i];
        if constexpr (terms > 1) sum += values[i + stride];
        if constexpr (terms > 2) sum += values[i + 2 * stride];
        sums[i] = first ? sum : sums[i] + sum;
    }
}

template <bool first>
void addTerms(std::size_t terms, const float* values, float* sums, std::size_t count, std::size_t stride) {
    if (terms == 1) addTerms<1, first>(values, sums, count, stride);
    if (terms == 2) addTerms<2, first>(values, sums, count, stride);
    if (terms == 3) addTerms<3, first>(values, sums, count, stride);
}

/// Each value becomes the sum of four, in place: a loop in rising order reads only ahead.
inline void quadruple(float* values, std::size_t count, std::size_t stride) {
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = (values[i] + values[i + stride]) + (values[i + 2 * stride] + values[i + 3 * stride]);
    }
}

/// addTerms and quadruple of the same values in one pass over the first `count`.
template <std::size_t terms>
void addTermsAndQuadruple(float* __restrict values, float* __restrict sums, std::size_t count, std::size_t stride) {
#pragma omp simd
    for (std::size_t i = 0; i < count; ++i) {
        const float a = values[i], b = values[i + stride], c = values[i + 2 * stride], d = values[i + 3 * stride];
        float sum = a;
        if constexpr (terms > 1) sum += b;
        if constexpr (terms > 2) sum += c;
        sums[i] = sum;
        values[i] = (a + b) + (c + d);
    }
}

inline void addTermsAndQuadruple(std::size_t terms, float* values, float* sums, std::size_t count, std::size_t stride) {
    if (terms == 1) addTermsAndQuadruple<1>(values, sums, count, stride);
    if (terms == 2) addTermsAndQuadruple<2>(values, sums, count, stride);
    if (terms == 3) addTermsAndQuadruple<3>(values, sums, count, stride);
}

}  // namespace detail

/// sums[i] = values[i] + values[i + stride] + ... + values[i + (size - 1) * stride] for i below `count`. The order of
/// the additions follows from `size` alone (its digits to base 4, lowest first), so a sum's bits are the same wherever
/// its window lies, and nothing outside the window can reach it. `values` holds count + (size - 1) * stride values and
/// is used up.
inline void windowSums(float* values, float* sums, std::size_t count, std::size_t stride, std::size_t size) {
    std::size_t summed = 0;
    for (std::size_t span = 1; span <= size; span *= 4) {
        const std::size_t terms = size / span % 4;
        const float* const next = values + summed * stride;
        if (summed == 0 && terms != 0 && size / span >= 4) {
            detail::addTermsAndQuadruple(terms, values, sums, count, span * stride);
            detail::quadruple(values + count, (size - 4 * span) * stride, span * stride);
            summed += terms * span;
            continue;
        }
        if (summed == 0) {
            detail::addTerms<true>(terms, next, sums, count, span * stride);
        } else {
            detail::addTerms<false>(terms, next, sums, count, span * stride);
        }
        summed += terms * span;
        if (size / span >= 4) detail::quadruple(values, count + (size - 4 * span) * stride, span * stride);
    }
}

}  // namespace zel::host
