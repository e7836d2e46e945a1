#pragma once

#include <cstddef>

namespace zel::host {

/// values[i] becomes the best of itself and values[i + distance], for i below `count`, in place: a loop in rising order
/// reads only ahead.
template <typename Order>
void bestsWith(typename Order::Key* values, std::ptrdiff_t count, std::ptrdiff_t distance) {
#pragma omp simd
    for (std::ptrdiff_t i = 0; i < count; ++i) values[i] = Order::best(values[i], values[i + distance]);
}

/// values[i] becomes the best of values[i], values[i + stride], ... values[i + (size - 1) * stride] for i below
/// `count`, in place, by windows that double from step to step. `values` holds count + (size - 1) * stride values and
/// is used up.
template <typename Order>
void windowBests(typename Order::Key* values, std::ptrdiff_t count, std::ptrdiff_t stride, std::ptrdiff_t size) {
    std::ptrdiff_t span = 1;
    for (; 2 * span <= size; span *= 2) bestsWith<Order>(values, count + (size - 2 * span) * stride, span * stride);
    if (span < size) bestsWith<Order>(values, count, (size - span) * stride);
}

}  // namespace zel::host
