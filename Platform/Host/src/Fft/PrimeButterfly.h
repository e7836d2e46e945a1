#pragma once

#include <cmath>
#include <cstddef>
#include <type_traits>

#include "Fft/Butterflies.h"

namespace zel::host {

/// The largest prime number of points that is transformed term by term: better than FFTW, and exact enough.
inline constexpr std::size_t maxPrime = 127;

namespace detail {

/// sum + lanes * factor, rounded once.
template <typename R>
[[gnu::always_inline]] inline void addProduct(Lanes<R>& sum, const Lanes<R>& lanes, R factor) {
#pragma omp simd
    for (std::size_t line = 0; line < panelLines<R>; ++line) sum[line] = std::fma(lanes[line], factor, sum[line]);
}

/// Gives the points first to first + count - 1 and their partners, prime - first and so on, to `store`. They are summed
/// side by side, so that each load serves all of them.
template <FftDirection direction, std::size_t count, typename R, typename Store>
[[gnu::always_inline]] inline void primePoints(std::size_t prime, std::size_t first, const PanelPoint<R>& constant,
                                               const PanelPoint<R>* sums, const PanelPoint<R>* differences,
                                               const R* roots, const Store& store) {
    PanelPoint<R> even[count], odd[count];
    std::size_t power[count];
    for (std::size_t i = 0; i < count; ++i) {
        even[i] = constant;
        odd[i] = PanelPoint<R>{};
        power[i] = 0;
    }
    for (std::size_t k = 1; k <= prime / 2; ++k) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t j = first + i;
            power[i] += power[i] + j < prime ? j : j - prime;
            const R* const root = roots + 2 * power[i];
            addProduct<R>(even[i].re, sums[k].re, root[0]);
            addProduct<R>(even[i].im, sums[k].im, root[0]);
            addProduct<R>(odd[i].re, differences[k].re, root[1]);
            addProduct<R>(odd[i].im, differences[k].im, root[1]);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const PanelPoint<R> turned = odd[i].template turned<direction>();
        store(first + i, even[i] + turned);
        store(prime - first - i, even[i] - turned);
    }
}

}  // namespace detail

/// Transforms an odd prime number of points that stand `distance` numbers apart, and gives them to store(index, point).
/// Points are taken in the pairs k and prime - k, whose roots of unity differ only in the sign of the imaginary part.
/// @param roots  real and imaginary part of each power of the first root of unity, from power 0 on.
template <FftDirection direction, typename R, typename Store>
void primeButterfly(std::size_t prime, const R* at, std::size_t distance, const R* roots, const Store& store) {
    using Point = PanelPoint<R>;
    const std::size_t pairs = prime / 2;
    Point sums[maxPrime / 2 + 1], differences[maxPrime / 2 + 1];
    const Point first = Point::load(at);
    Point all = first;
    for (std::size_t k = 1; k <= pairs; ++k) {
        const Point a = Point::load(at + k * distance), b = Point::load(at + (prime - k) * distance);
        sums[k] = a + b;
        differences[k] = a - b;
        all = all + sums[k];
    }
    store(0, all);
    const auto points = [&]<std::size_t count>(std::size_t j, std::integral_constant<std::size_t, count>) {
        detail::primePoints<direction, count>(prime, j, first, sums, differences, roots, store);
    };
    constexpr std::integral_constant<std::size_t, 4> together;
    std::size_t j = 1;
    for (; j + together <= pairs + 1; j += together) points(j, together);
    for (; j <= pairs; ++j) points(j, std::integral_constant<std::size_t, 1>{});
}

}  // namespace zel::host
