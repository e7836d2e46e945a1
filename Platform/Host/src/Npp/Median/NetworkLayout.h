#pragma once

#include <nppdefs.h>

#include <algorithm>
#include <cstddef>

namespace zel::host {

/// The memory that a network works in. Rows of pixels come first: of each, one plane after the other, plane p holding
/// the pixels of columns p, p + tile.width, ... so that neighbouring lanes are neighbouring tiles. Behind them lie the
/// sorted columns, likewise, and the planes of the medians. A row of tiles further down all of this begins
/// tile.height rows of pixels later, so that what two rows of tiles share need not move for most of them.
///
/// Sizes and strides are bytes where nothing else is said.
struct NetworkLayout {
    static constexpr std::ptrdiff_t registerBytes = 64;

    constexpr NetworkLayout(NppiSize maskSize, NppiSize tileSize, std::size_t bytesOfKey)
        : mask(maskSize), tile(tileSize), keyBytes(static_cast<std::ptrdiff_t>(bytesOfKey)) {
        constexpr std::ptrdiff_t cacheBytes = 1 << 19;  // of the second level
        constexpr std::ptrdiff_t maxColumns = 4096;
        const std::ptrdiff_t allRows = rows() + coreRows() + 2 * advance() + tile.height;
        const std::ptrdiff_t fitting =
            std::min(cacheBytes / (allRows * tile.width * registerBytes), maxColumns / (lanes() * tile.width));
        tilesAcross = std::max<std::ptrdiff_t>(fitting, 1) * lanes();
        const std::ptrdiff_t planeTiles = tilesAcross + (columns() - 1) / tile.width;
        planeStride = (planeTiles + lanes() - 1) / lanes() * registerBytes;
        rowStride = tile.width * planeStride;
        sortedColumns = (rows() + advance()) * rowStride;
        medians = sortedColumns + coreRows() * rowStride;
        medianStride = tilesAcross * keyBytes;
        end = medians + tile.width * tile.height * medianStride;
        bytes = static_cast<std::size_t>(end + advance() * rowStride);
    }

    constexpr std::ptrdiff_t lanes() const { return registerBytes / keyBytes; }
    /// Pixels that a tile's windows reach, and rows of them in the core, which begins at row tile.height - 1.
    constexpr std::ptrdiff_t columns() const { return mask.width + tile.width - 1; }
    constexpr std::ptrdiff_t rows() const { return mask.height + tile.height - 1; }
    constexpr std::ptrdiff_t coreRows() const { return mask.height - tile.height + 1; }
    /// Rows of tiles between two moves of the rows of pixels, and rows of pixels from the first of them to the last.
    constexpr std::ptrdiff_t tileRows() const { return std::max(16 / tile.height, 1); }
    constexpr std::ptrdiff_t advance() const { return (tileRows() - 1) * tile.height; }
    constexpr std::ptrdiff_t maxColumnsOut() const { return tilesAcross * tile.width; }

    /// Of an input of MedianGraph.
    constexpr std::ptrdiff_t inputAddress(std::ptrdiff_t number) const {
        const std::ptrdiff_t row = number / columns(), column = number % columns();
        return rowAddress(row) + column % tile.width * planeStride + column / tile.width * keyBytes;
    }
    constexpr std::ptrdiff_t coreAddress(std::ptrdiff_t j) const { return (tile.height - 1 + j) * rowStride; }
    constexpr std::ptrdiff_t sortedAddress(std::ptrdiff_t j) const {
        // A core of one row is sorted as it is.
        return coreRows() == 1 ? coreAddress(0) : sortedColumns + j * rowStride;
    }
    constexpr std::ptrdiff_t medianAddress(std::ptrdiff_t number) const { return medians + number * medianStride; }

    NppiSize mask;
    NppiSize tile;
    std::ptrdiff_t keyBytes;
    std::ptrdiff_t tilesAcross = 0;
    std::ptrdiff_t planeStride = 0;
    std::ptrdiff_t rowStride = 0;
    std::ptrdiff_t sortedColumns = 0;
    std::ptrdiff_t medians = 0;
    std::ptrdiff_t medianStride = 0;
    std::ptrdiff_t end = 0;  ///< of the medians
    std::size_t bytes = 0;   ///< in all; what lies behind the medians comes on top

private:
    constexpr std::ptrdiff_t rowAddress(std::ptrdiff_t row) const {
        return row < rows() ? row * rowStride : sortedAddress(row - rows());
    }
};

}  // namespace zel::host
