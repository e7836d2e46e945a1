#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

#include "Npp/Common/FilterJob.h"
#include "Npp/Common/TileSize.h"
#include "Npp/Common/WorkBuffer.h"
#include "Npp/Morphology/StructuringElement.h"
#include "Npp/Morphology/WindowBests.h"

namespace zel::host {

/// The runs of an element, as RunTiles takes them: by groups of rows, and within a group by the power of two that a
/// run's length reaches.
class RunsInOrder {
public:
    static constexpr std::ptrdiff_t groupRows = 64;  // bounds the source rows that a tile holds at a time

    explicit RunsInOrder(const StructuringElement& element) : runs_(element.runs()), top_(-element.windowY().before) {
        std::stable_sort(runs_.begin(), runs_.end(), [this](const MaskRun& a, const MaskRun& b) {
            return groupTop(a) != groupTop(b) ? groupTop(a) < groupTop(b) : span(a) < span(b);
        });
    }

    auto begin() const { return runs_.begin(); }
    auto end() const { return runs_.end(); }
    /// The offset of the first row of the run's group.
    std::ptrdiff_t groupTop(const MaskRun& run) const { return top_ + (run.y - top_) / groupRows * groupRows; }
    /// The largest power of two within the run: two windows of this size cover it.
    static std::ptrdiff_t span(const MaskRun& run) {
        return static_cast<std::ptrdiff_t>(std::bit_floor(static_cast<std::size_t>(run.length)));
    }

private:
    std::vector<MaskRun> runs_;
    std::ptrdiff_t top_;
};

/// Erosion or dilation by any element: each run of a mask row is covered by two windows of a power of two, and these
/// windows double along the source rows in step with the lengths of the runs.
template <typename Order>
class RunTiles {
public:
    RunTiles(const FilterJob<typename Order::Pixel>& job, const StructuringElement& element, const RunsInOrder& runs,
             std::ptrdiff_t maxRows)
        : job_(job),
          windowX_(element.windowX()),
          runs_(runs),
          groupRows_(std::min(RunsInOrder::groupRows, element.windowY().size)),
          tile_(windowX_.size, groupRows_, job.roi.width, maxRows),
          stride_(tile_.columns + windowX_.size - 1),
          buffer_(WorkBuffer::bytesFor<Key>((tile_.rows + groupRows_ - 1) * stride_) +
                  WorkBuffer::bytesFor<Key>(tile_.rows * tile_.columns)),
          values_(buffer_.template take<Key>((tile_.rows + groupRows_ - 1) * stride_)),
          bests_(buffer_.template take<Key>(tile_.rows * tile_.columns)) {}

    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        forEachTile(tile_, begin, end, job_.roi.width, [this](auto... edges) { filterTile(edges...); });
    }

private:
    using Key = typename Order::Key;
    using RunIterator = decltype(std::declval<const RunsInOrder&>().begin());

    void filterTile(std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left, std::ptrdiff_t right) {
        const std::ptrdiff_t rows = bottom - top;
        const SourceColumns source(job_, windowX_, left, right);
        std::fill_n(bests_, rows * tile_.columns, Order::none);
        for (auto run = runs_.begin(); run != runs_.end();) {
            const std::ptrdiff_t groupTop = runs_.groupTop(*run);
            const auto groupEnd =
                std::find_if(run, runs_.end(), [&](const MaskRun& other) { return runs_.groupTop(other) != groupTop; });
            load(job_.offset.y + top + groupTop, rows + groupRows_ - 1, source);
            addGroup(run, groupEnd, groupTop, rows);
            run = groupEnd;
        }
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            const Key* const line = bests_ + j * tile_.columns;
            std::transform(line, line + (right - left), job_.dstRow(top + j) + left, Order::pixelOf);
        }
    }

    void load(std::ptrdiff_t top, std::ptrdiff_t rows, const SourceColumns& source) const {
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            const auto* const row = job_.srcRow(top + j) + source.first;
            Key* const line = values_ + j * stride_;
            std::transform(row, row + source.count, line + source.padLeft, Order::keyOf);
            source.pad(line);
            std::fill(line + source.padded(), line + stride_, Order::none);
        }
    }

    void addGroup(RunIterator begin, RunIterator end, std::ptrdiff_t groupTop, std::ptrdiff_t rows) const {
        std::ptrdiff_t span = 1;
        for (auto run = begin; run != end;) {
            for (; span < RunsInOrder::span(*run); span *= 2) {
                bestsWith<Order>(values_, (rows + groupRows_ - 1) * stride_ - span, span);
            }
            const auto sameSpanEnd =
                std::find_if(run, end, [&](const MaskRun& other) { return RunsInOrder::span(other) != span; });
            for (std::ptrdiff_t j = 0; j < rows; ++j) {
                addRuns(run, sameSpanEnd, j - groupTop, span, bests_ + j * tile_.columns);
            }
            run = sameSpanEnd;
        }
    }

    /// @param centreRow  row of the tile's source pixels on which offset 0 lies.
    void addRuns(RunIterator begin, RunIterator end, std::ptrdiff_t centreRow, std::ptrdiff_t span, Key* bests) const {
        for (auto run = begin; run != end; ++run) {
            const Key* const first = values_ + (centreRow + run->y) * stride_ + windowX_.before + run->x;
            const Key* const last = first + run->length - span;
#pragma omp simd
            for (std::ptrdiff_t x = 0; x < tile_.columns; ++x) {
                bests[x] = Order::best(bests[x], Order::best(first[x], last[x]));
            }
        }
    }

    const FilterJob<typename Order::Pixel>& job_;
    MaskWindow windowX_;
    const RunsInOrder& runs_;
    std::ptrdiff_t groupRows_;
    TileSize tile_;
    std::ptrdiff_t stride_;
    WorkBuffer buffer_;
    Key* values_;
    Key* bests_;
};

}  // namespace zel::host
