#pragma once

#include <cstddef>

#include "Fft/Butterflies.h"

namespace zel::host {

/// The largest prime number of points that is transformed term by term: better than FFTW, and exact enough.
inline constexpr std::size_t maxPrime = 127;

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
    for (std::size_t j = 1; j <= pairs; ++j) {
        Point even = first, odd{};
        std::size_t power = 0;
        for (std::size_t k = 1; k <= pairs; ++k) {
            power += power + j < prime ? j : j - prime;
            even = even + sums[k] * roots[2 * power];
            odd = odd + differences[k] * roots[2 * power + 1];
        }
        const Point turned = odd.template turned<direction>();
        store(j, even + turned);
        store(prime - j, even - turned);
    }
}

}  // namespace zel::host
