#pragma once

#include <algorithm>
#include <cstddef>

namespace zel::host {

/// Rows and columns of the tiles that a filter works in, for work memory that stays in the second-level cache. Larger
/// where windows are large: neighbouring tiles overlap by window - 1 pixels.
struct TileSize {
    std::ptrdiff_t rows;
    std::ptrdiff_t columns;

    TileSize(std::ptrdiff_t windowWidth, std::ptrdiff_t windowHeight, std::ptrdiff_t maxColumns,
             std::ptrdiff_t maxRows) {
        constexpr std::ptrdiff_t usualItems = std::ptrdiff_t{1} << 17;
        constexpr std::ptrdiff_t maxItems = std::ptrdiff_t{1} << 21;
        constexpr std::ptrdiff_t usualRows = 32;
        const std::ptrdiff_t columnsBeside = windowWidth - 1;
        const std::ptrdiff_t maxRowsThatFit = std::max<std::ptrdiff_t>(maxItems / (columnsBeside + 256), 16);
        rows = std::min({std::max(usualRows, windowHeight), maxRowsThatFit, maxRows});
        columns = std::max(usualItems / rows - columnsBeside, std::max<std::ptrdiff_t>(columnsBeside, 64));
        columns = std::min(columns, maxColumns);
    }
};

/// body(top, bottom, left, right) for tiles that cover the rows [begin, end) of a region so many columns wide.
template <typename Body>
void forEachTile(const TileSize& tile, std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t width,
                 const Body& body) {
    for (std::ptrdiff_t top = begin; top < end; top += tile.rows) {
        for (std::ptrdiff_t left = 0; left < width; left += tile.columns) {
            body(top, std::min(top + tile.rows, end), left, std::min(left + tile.columns, width));
        }
    }
}

}  // namespace zel::host
