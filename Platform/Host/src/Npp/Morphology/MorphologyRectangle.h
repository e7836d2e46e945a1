#pragma once

#include <algorithm>
#include <cstddef>

#include "Npp/Common/FilterJob.h"
#include "Npp/Common/TileSize.h"
#include "Npp/Common/WorkBuffer.h"
#include "Npp/Morphology/StructuringElement.h"
#include "Npp/Morphology/WindowBests.h"

namespace zel::host {

/// Erosion or dilation by a rectangle: the bests of columns first, then those of rows.
template <typename Order>
class RectangleTiles {
public:
    RectangleTiles(const FilterJob<typename Order::Pixel>& job, const StructuringElement& element,
                   std::ptrdiff_t maxRows)
        : job_(job),
          windowX_(element.windowX()),
          windowY_(element.windowY()),
          tile_(windowX_.size, windowY_.size, job.roi.width, maxRows),
          stride_(tile_.columns + windowX_.size - 1),
          panelWidth_(widthOfPanels(tile_.rows + windowY_.size - 1, stride_)),
          buffer_(WorkBuffer::bytesFor<Key>((tile_.rows + windowY_.size - 1) * panelWidth_) +
                  WorkBuffer::bytesFor<Key>(tile_.rows * stride_)),
          panel_(buffer_.template take<Key>((tile_.rows + windowY_.size - 1) * panelWidth_)),
          bests_(buffer_.template take<Key>(tile_.rows * stride_)) {}

    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        forEachTile(tile_, begin, end, job_.roi.width, [this](auto... edges) { filterTile(edges...); });
    }

private:
    using Key = typename Order::Key;

    /// Columns whose windows are worked out together: few enough for the second-level cache.
    static std::ptrdiff_t widthOfPanels(std::ptrdiff_t height, std::ptrdiff_t width) {
        constexpr std::ptrdiff_t items = (std::ptrdiff_t{1} << 18) / sizeof(Key);
        return std::min(std::max<std::ptrdiff_t>(items / height, 64), width);
    }

    void filterTile(std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left, std::ptrdiff_t right) {
        const std::ptrdiff_t rows = bottom - top;
        const SourceColumns source(job_, windowX_, left, right);
        for (std::ptrdiff_t x = 0; x < source.count; x += panelWidth_) {
            bestsOfColumns(job_.offset.y + top - windowY_.before, rows, source.first + x,
                           std::min(panelWidth_, source.count - x), bests_ + source.padLeft + x);
        }
        for (std::ptrdiff_t j = 0; j < rows; ++j) {
            Key* const line = bests_ + j * stride_;
            source.pad(line);
            windowBests<Order>(line, right - left, 1, windowX_.size);
            std::transform(line, line + (right - left), job_.dstRow(top + j) + left, Order::pixelOf);
        }
    }

    /// From the source pixel (first, top) on, into rows of the tile.
    void bestsOfColumns(std::ptrdiff_t top, std::ptrdiff_t rows, std::ptrdiff_t first, std::ptrdiff_t count,
                        Key* bests) const {
        for (std::ptrdiff_t j = 0; j < rows + windowY_.size - 1; ++j) {
            const auto* const row = job_.srcRow(top + j) + first;
            std::transform(row, row + count, panel_ + j * count, Order::keyOf);
        }
        windowBests<Order>(panel_, rows * count, count, windowY_.size);
        for (std::ptrdiff_t j = 0; j < rows; ++j) std::copy_n(panel_ + j * count, count, bests + j * stride_);
    }

    const FilterJob<typename Order::Pixel>& job_;
    MaskWindow windowX_;
    MaskWindow windowY_;
    TileSize tile_;
    std::ptrdiff_t stride_;
    std::ptrdiff_t panelWidth_;
    WorkBuffer buffer_;
    Key* panel_;
    Key* bests_;
};

}  // namespace zel::host
