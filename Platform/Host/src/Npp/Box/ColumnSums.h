#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "Npp/Box/Box.h"

namespace zel::host {

// Sums down the columns of an image, one for each source column under the windows of a row, that follow the window from
// row to row. They come out the same as if summed anew only in types whose additions are exact: unsigned integers,
// which may wrap on the way, WideSum, and doubles within the bounds of FloatParts.h.

/// What split(pixel) makes of each pixel is summed: an array, each item in sums of its own.
template <typename Column, std::size_t parts>
using Columns = std::array<Column*, parts>;

/// columns[x] += times * split(row[x]).
template <typename Column, std::size_t parts, typename Pixel, typename Split>
void addRow(Columns<Column, parts> columns, const Pixel* row, std::ptrdiff_t count, std::uint64_t times, Split split) {
    if (times == 0) return;
    const auto factor = static_cast<Column>(times);
    const auto add = [=]<std::size_t... i>(std::ptrdiff_t x, std::index_sequence<i...>) {
        const std::array<Column, parts> values = split(row[x]);
        ((columns[i][x] = static_cast<Column>(columns[i][x] + factor * values[i])), ...);
    };
#pragma omp simd
    for (std::ptrdiff_t x = 0; x < count; ++x) add(x, std::make_index_sequence<parts>());
}

template <typename Column, std::size_t parts, typename Pixel, typename Split>
void slideRow(Columns<Column, parts> columns, const Pixel* entering, const Pixel* leaving, std::ptrdiff_t count,
              Split split) {
    const auto slide = [=]<std::size_t... i>(std::ptrdiff_t x, std::index_sequence<i...>) {
        const std::array<Column, parts> in = split(entering[x]), out = split(leaving[x]);
        ((columns[i][x] = static_cast<Column>(columns[i][x] + in[i] - out[i])), ...);
    };
#pragma omp simd
    for (std::ptrdiff_t x = 0; x < count; ++x) slide(x, std::make_index_sequence<parts>());
}

/// columns[x] = sum of source column first + x under the window of output row y.
template <typename Column, std::size_t parts, typename Pixel, typename Split>
void startColumns(const BoxJob<Pixel>& job, std::ptrdiff_t y, std::ptrdiff_t first,
                  const Columns<Column, parts>& columns, std::ptrdiff_t count, const Split& split) {
    const WindowAxis& window = job.windowY;
    for (Column* const part : columns) std::fill_n(part, count, Column{});
    addRow(columns, job.srcRow(0) + first, count, window.firstTimes, split);
    addRow(columns, job.srcRow(job.size.height - 1) + first, count, window.lastTimes, split);
    const std::ptrdiff_t top = job.offset.y + y - window.before;
    for (std::ptrdiff_t j = 0; j < window.size; ++j) addRow(columns, job.srcRow(top + j) + first, count, 1, split);
}

/// Takes the columns from the window of output row y - 1 to that of y.
template <typename Column, std::size_t parts, typename Pixel, typename Split>
void slideColumns(const BoxJob<Pixel>& job, std::ptrdiff_t y, std::ptrdiff_t first,
                  const Columns<Column, parts>& columns, std::ptrdiff_t count, const Split& split) {
    const std::ptrdiff_t top = job.offset.y + y - job.windowY.before;
    slideRow(columns, job.srcRow(top + job.windowY.size - 1) + first, job.srcRow(top - 1) + first, count, split);
}

/// What the pixels add that count beside the window along x, from the padded column sums of one row. The image's border
/// columns are among them whenever such pixels exist: the window then reaches both ends or more.
template <typename Sum, typename Column>
Sum repeatedColumns(const WindowAxis& window, const Column* columns, std::ptrdiff_t padded) {
    return static_cast<Sum>(static_cast<Sum>(window.firstTimes) * static_cast<Sum>(columns[0]) +
                            static_cast<Sum>(window.lastTimes) * static_cast<Sum>(columns[padded - 1]));
}

}  // namespace zel::host
