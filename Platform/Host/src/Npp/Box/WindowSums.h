#pragma once

#include <array>
#include <cstddef>

#include "Npp/Box/ColumnSums.h"
#include "Npp/Box/SlidingSums.h"
#include "Npp/Common/WorkBuffer.h"

namespace zel::host {

/// Sums under the windows of a strip of output columns, from row to row: see ColumnSums.h for types and parts.
template <typename Pixel, typename Sum, std::size_t parts>
class WindowSums {
public:
    WindowSums(const BoxJob<Pixel>& job, const SourceColumns& source)
        : job_(job),
          source_(source),
          buffer_(parts * WorkBuffer::bytesFor<Sum>(items())),
          columns_(takeColumns()),
          running_(job, source, columns_) {}

    /// Of output row y, the first one or the one below the last call's.
    template <typename Split>
    SlidingSums<Sum, parts> under(std::ptrdiff_t y, const Split& split) {
        running_.goTo(y, split);
        return {columns_, job_.windowX, source_.padded()};
    }

private:
    std::size_t items() const { return static_cast<std::size_t>(source_.padded() + SlidingSum<Sum>::slack); }

    Columns<Sum, parts> takeColumns() {
        Columns<Sum, parts> columns;
        for (Sum*& part : columns) part = buffer_.template take<Sum>(items());
        return columns;
    }

    const BoxJob<Pixel>& job_;
    const SourceColumns& source_;
    WorkBuffer buffer_;
    Columns<Sum, parts> columns_;
    RunningColumns<Pixel, Sum, parts> running_;
};

}  // namespace zel::host
