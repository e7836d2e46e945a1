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

/// The columns under the windows of a strip of output columns, padded as the image's rows are.
template <typename Pixel, typename Column, std::size_t parts>
class RunningColumns {
public:
    /// @param columns  arrays of source.padded() items, for their use alone.
    RunningColumns(const BoxJob<Pixel>& job, const SourceColumns& source, const Columns<Column, parts>& columns)
        : job_(job), source_(source), columns_(columns), inside_(columns) {
        for (Column*& inside : inside_) inside += source.padLeft;
    }

    /// Goes to the windows of output row y, the first one or the one below the last call's.
    template <typename Split>
    void goTo(std::ptrdiff_t y, const Split& split) {
        if (started_)
            slide(y, split);
        else
            start(y, split);
        started_ = true;
        for (Column* const columns : columns_) source_.pad(columns);
    }

private:
    template <typename Split>
    void start(std::ptrdiff_t y, const Split& split) const {
        const WindowAxis& window = job_.windowY;
        const auto add = [&](std::ptrdiff_t row, std::uint64_t times) {
            addRow(inside_, job_.srcRow(row) + source_.first, source_.count, times, split);
        };
        for (Column* const inside : inside_) std::fill_n(inside, source_.count, Column{});
        add(0, window.firstTimes);
        add(job_.size.height - 1, window.lastTimes);
        const std::ptrdiff_t top = job_.offset.y + y - window.before;
        for (std::ptrdiff_t j = 0; j < window.size; ++j) add(top + j, 1);
    }

    template <typename Split>
    void slide(std::ptrdiff_t y, const Split& split) const {
        const std::ptrdiff_t top = job_.offset.y + y - job_.windowY.before;
        slideRow(inside_, job_.srcRow(top + job_.windowY.size - 1) + source_.first,
                 job_.srcRow(top - 1) + source_.first, source_.count, split);
    }

    const BoxJob<Pixel>& job_;
    const SourceColumns& source_;
    Columns<Column, parts> columns_;
    Columns<Column, parts> inside_;
    bool started_ = false;
};

/// What the pixels add that count beside the window along x, from the padded column sums of one row. The image's border
/// columns are among them whenever such pixels exist: the window then reaches both ends or more.
template <typename Sum, typename Column>
Sum repeatedColumns(const WindowAxis& window, const Column* columns, std::ptrdiff_t padded) {
    return static_cast<Sum>(static_cast<Sum>(window.firstTimes) * static_cast<Sum>(columns[0]) +
                            static_cast<Sum>(window.lastTimes) * static_cast<Sum>(columns[padded - 1]));
}

}  // namespace zel::host
