#pragma once

#include <host_runtime/Parallel.h>

#include <algorithm>
#include <cstddef>

#include "Npp/Common/FilterJob.h"

namespace zel::host {

/// Deals the output rows to the threads: filterRows(begin, end). What a thread reads beyond its own rows is a window.
template <typename T, typename FilterRows>
void dealRows(const FilterJob<T>& job, std::ptrdiff_t windowHeight, const FilterRows& filterRows) {
    constexpr std::ptrdiff_t pixels = 1 << 16;
    const std::ptrdiff_t grain = std::max(pixels / job.roi.width + 1, 4 * windowHeight);
    parallelFor(static_cast<std::size_t>(job.roi.height), static_cast<std::size_t>(grain),
                [&](std::size_t begin, std::size_t end) {
                    filterRows(static_cast<std::ptrdiff_t>(begin), static_cast<std::ptrdiff_t>(end));
                });
}

}  // namespace zel::host
