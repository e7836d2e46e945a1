#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "FilterJob.h"
#include "Scratch.h"
#include "StructuringElement.h"

namespace zel::host {

// Erosion or dilation by the two elements of radius 1, which larger ones are made of pass by pass: close to the speed
// of a copy, since a pass is little more than one.

namespace detail {

/// Bests of rows 0 ... 2 and of rows 1 ... 3: two output rows share one comparison and two loads.
template <typename Order>
void bestsOfThreeRows(const std::array<const typename Order::Pixel*, 4>& rows, typename Order::Key* upper,
                      typename Order::Key* lower, std::ptrdiff_t count) {
    const auto [row0, row1, row2, row3] = rows;
#pragma omp simd
    for (std::ptrdiff_t x = 0; x < count; ++x) {
        const typename Order::Key shared = Order::best(Order::keyOf(row1[x]), Order::keyOf(row2[x]));
        upper[x] = Order::best(Order::keyOf(row0[x]), shared);
        lower[x] = Order::best(shared, Order::keyOf(row3[x]));
    }
}

template <typename Order>
void bestsOfThreeColumns(const typename Order::Key* columns, typename Order::Pixel* dst, std::ptrdiff_t count) {
#pragma omp simd
    for (std::ptrdiff_t x = 0; x < count; ++x) {
        dst[x] = Order::pixelOf(Order::best(Order::best(columns[x], columns[x + 2]), columns[x + 1]));
    }
}

template <typename Order>
void filterSquareStrip(const FilterJob<typename Order::Pixel>& job, std::ptrdiff_t top, std::ptrdiff_t bottom,
                       std::ptrdiff_t left, std::ptrdiff_t right) {
    using Key = typename Order::Key;
    const SourceColumns source(job, MaskWindow{1, 3}, left, right);
    const auto padded = static_cast<std::size_t>(source.padded());
    Scratch scratch(2 * Scratch::bytesFor<Key>(padded));
    const std::array lines{scratch.take<Key>(padded), scratch.take<Key>(padded)};
    for (std::ptrdiff_t y = top; y < bottom; y += 2) {
        const auto row = [&](std::ptrdiff_t dy) { return job.srcRow(job.offset.y + y + dy) + source.first; };
        bestsOfThreeRows<Order>({row(-1), row(0), row(1), row(2)}, lines[0] + source.padLeft, lines[1] + source.padLeft,
                                source.count);
        for (std::ptrdiff_t i = 0; i < std::min<std::ptrdiff_t>(2, bottom - y); ++i) {
            Key* const line = lines[static_cast<std::size_t>(i)];
            source.pad(line);
            bestsOfThreeColumns<Order>(line, job.dstRow(y + i) + left, right - left);
        }
    }
}

/// Output columns [begin, end) of one row, all of whose neighbours lie in the image.
template <typename Order>
void crossesInside(const typename Order::Pixel* above, const typename Order::Pixel* row,
                   const typename Order::Pixel* below, typename Order::Pixel* dst, std::ptrdiff_t begin,
                   std::ptrdiff_t end) {
#pragma omp simd
    for (std::ptrdiff_t x = begin; x < end; ++x) {
        const auto vertical = Order::best(Order::keyOf(above[x]), Order::keyOf(below[x]));
        const auto horizontal = Order::best(Order::keyOf(row[x - 1]), Order::keyOf(row[x + 1]));
        dst[x] = Order::pixelOf(Order::best(Order::best(vertical, horizontal), Order::keyOf(row[x])));
    }
}

}  // namespace detail

/// Output rows [begin, end) by the square of 3 by 3 pixels.
template <typename Order>
void filterSquareRows(const FilterJob<typename Order::Pixel>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    // Wide, since memory is read ahead along rows; the rows at hand stay in the second-level cache.
    constexpr std::ptrdiff_t stripWidth = 16384 / sizeof(typename Order::Key);
    for (std::ptrdiff_t left = 0; left < job.roi.width; left += stripWidth) {
        detail::filterSquareStrip<Order>(job, begin, end, left,
                                         std::min<std::ptrdiff_t>(left + stripWidth, job.roi.width));
    }
}

/// Output rows [begin, end) by a pixel and its four neighbours.
template <typename Order>
void filterCrossRows(const FilterJob<typename Order::Pixel>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
    using Pixel = typename Order::Pixel;
    const std::ptrdiff_t lastColumn = job.size.width - 1 - job.offset.x;
    const std::ptrdiff_t insideBegin = job.offset.x == 0 ? 1 : 0;
    const std::ptrdiff_t insideEnd = std::min<std::ptrdiff_t>(job.roi.width, lastColumn);
    for (std::ptrdiff_t y = begin; y < end; ++y) {
        const auto row = [&](std::ptrdiff_t dy) { return job.srcRow(job.offset.y + y + dy) + job.offset.x; };
        const Pixel *const above = row(-1), *const here = row(0), *const below = row(1);
        Pixel* const dst = job.dstRow(y);
        detail::crossesInside<Order>(above, here, below, dst, insideBegin, insideEnd);
        // At the image's edge the pixel stands for the neighbour beyond it.
        const auto atEdge = [&](std::ptrdiff_t x) {
            const Pixel cross[] = {above[x], below[x], here[x], here[std::max(x - 1, insideBegin - 1)],
                                   here[std::min(x + 1, lastColumn)]};
            typename Order::Key best = Order::none;
            for (const Pixel pixel : cross) best = Order::best(best, Order::keyOf(pixel));
            dst[x] = Order::pixelOf(best);
        };
        if (insideBegin == 1) atEdge(0);
        if (insideEnd == lastColumn && insideEnd < job.roi.width) atEdge(lastColumn);
    }
}

}  // namespace zel::host
