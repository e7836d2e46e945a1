#pragma once

#include <algorithm>
#include <cstddef>

namespace zel::host {

/// values[i] becomes the best of itself and values[i + distance], for i below `count`, in place: a loop in rising order
/// reads only ahead.
template <typename Order>
void bestsWith(typename Order::Key* values, std::ptrdiff_t count, std::ptrdiff_t distance) {
#pragma omp simd
    for (std::ptrdiff_t i = 0; i < count; ++i) values[i] = Order::best(values[i], values[i + distance]);
}

/// The same with three values ahead.
template <typename Order>
void bestsWith(typename Order::Key* values, std::ptrdiff_t count, std::ptrdiff_t first, std::ptrdiff_t second,
               std::ptrdiff_t third) {
#pragma omp simd
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        values[i] =
            Order::best(Order::best(values[i], values[i + first]), Order::best(values[i + second], values[i + third]));
    }
}

/// values[i] becomes the best of values[i], values[i + stride], ... values[i + (size - 1) * stride] for i below
/// `count`, in place, by windows that grow by four from step to step. `values` holds count + (size - 1) * stride values
/// and is used up.
template <typename Order>
void windowBests(typename Order::Key* values, std::ptrdiff_t count, std::ptrdiff_t stride, std::ptrdiff_t size) {
    std::ptrdiff_t span = 1;
    for (; 4 * span <= size; span *= 4) {
        const std::ptrdiff_t distance = span * stride;
        bestsWith<Order>(values, count + (size - 4 * span) * stride, distance, 2 * distance, 3 * distance);
    }
    if (span == size) return;
    const std::ptrdiff_t last = size - span;
    if (last <= span) return bestsWith<Order>(values, count, last * stride);
    bestsWith<Order>(values, count, span * stride, std::min(2 * span, last) * stride, last * stride);
}

}  // namespace zel::host
