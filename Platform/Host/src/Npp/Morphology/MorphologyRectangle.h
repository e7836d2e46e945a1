#pragma once

#include <algorithm>
#include <cstddef>

#include "Npp/Common/FilterJob.h"
#include "Npp/Common/Scratch.h"
#include "Npp/Common/TileSize.h"
#include "Npp/Morphology/StructuringElement.h"
#include "Npp/Morphology/WindowBests.h"

namespace zel::host {

/// Erosion or dilation by a rectangle: the bests of columns first, then those of rows.
template <typename Order>
class RectangleTiles {
public:
    RectangleTiles(const FilterJob<typename Order::Pixel>& job, const StructuringElement& element,
                   std::ptrdiff_t rowsLeft)
        : job_(job),
          windowX_(element.windowX()),
          windowY_(element.windowY()),
          tile_(windowX_.size, windowY_.size, job.roi.width, rowsLeft),
          stride_(tile_.columns + windowX_.size - 1),
          blockWidth_(widthOfBlocks(tile_.rows + windowY_.size - 1, stride_)),
          scratch_(Scratch::bytesFor<Key>((tile_.rows + windowY_.size - 1) * blockWidth_) +
                   Scratch::bytesFor<Key>(tile_.rows * stride_)),
          block_(scratch_.template take<Key>((tile_.rows + windowY_.size - 1) * blockWidth_)),
          bests_(scratch_.template take<Key>(tile_.rows * stride_)) {}

    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        forEachTile(tile_, begin, end, job_.roi.width, [this](auto... edges) { filterTile(edges...); });
    }

private:
    using Key = typename Order::Key;

    /// Columns whose windows are worked out together: few enough for the second-level cache.
    static std::ptrdiff_t widthOfBlocks(std::ptrdiff_t height, std::ptrdiff_t width) {
        constexpr std::ptrdiff_t items = (std::ptrdiff_t{1} << 18) / sizeof(Key);
        return std::min(std::max<std::ptrdiff_t>(items / height, 64), width);
    }

    void filterTile(std::ptrdiff_t top, std::ptrdiff_t bottom, std::ptrdiff_t left, std::ptrdiff_t right) {
        const std::ptrdiff_t rows = bottom - top;
        const SourceColumns source(job_, windowX_, left, right);
        for (std::ptrdiff_t x = 0; x < source.count; x += blockWidth_) {
            bestsOfColumns(job_.offset.y + top - windowY_.before, rows, source.first + x,
                           std::min(blockWidth_, source.count - x), bests_ + source.padLeft + x);
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
            std::transform(row, row + count, block_ + j * count, Order::keyOf);
        }
        windowBests<Order>(block_, rows * count, count, windowY_.size);
        for (std::ptrdiff_t j = 0; j < rows; ++j) std::copy_n(block_ + j * count, count, bests + j * stride_);
    }

    const FilterJob<typename Order::Pixel>& job_;
    MaskWindow windowX_;
    MaskWindow windowY_;
    TileSize tile_;
    std::ptrdiff_t stride_;
    std::ptrdiff_t blockWidth_;
    Scratch scratch_;
    Key* block_;
    Key* bests_;
};

}  // namespace zel::host
