#pragma once

#include <nppdefs.h>

#include <cstddef>
#include <memory>

#include "Npp/Median/MinMaxProgram.h"

namespace zel::host {

/// The programs that find the medians of a row of tiles side by side, and how the memory that they work in is laid out:
/// for each row of pixels one plane after the other, plane p holding the pixels of columns p, p + tile.width, ... In
/// the lanes of a register are neighbouring tiles.
class MedianNetwork {
public:
    /// The network for a region so many pixels wide; the latest few are kept.
    static std::shared_ptr<const MedianNetwork> of(NppiSize mask, std::ptrdiff_t width, std::size_t keyBytes);

    MedianNetwork(NppiSize mask, NppiSize tile, std::size_t keyBytes);

    NppiSize tile() const { return tile_; }
    /// Rows of pixels that a row of tiles reaches.
    std::ptrdiff_t rows() const { return rows_; }
    /// Output columns that are worked out together at most.
    std::ptrdiff_t stripWidth() const { return tilesAcross_ * tile_.width; }

    std::size_t bytes() const { return bytes_; }
    /// Keys from plane to plane of a row of pixels, and from row to row.
    std::ptrdiff_t planeStride() const { return planeStride_; }
    std::ptrdiff_t rowStride() const { return tile_.width * planeStride_; }
    /// Bytes from the memory's start to the planes of the medians: those of a row one after the other.
    std::ptrdiff_t medians() const { return medians_; }
    std::ptrdiff_t medianStride() const { return tilesAcross_; }

    /// Finds the medians of the first `columns` columns under the rows of pixels at `memory`.
    template <typename Key>
    void run(std::byte* memory, std::ptrdiff_t columns) const {
        constexpr std::ptrdiff_t lanes = MinMaxProgram::laneBytes / static_cast<std::ptrdiff_t>(sizeof(Key));
        columnProgram_.run<Key>(memory, rowStride() / lanes);
        const std::ptrdiff_t tiles = (columns + tile_.width - 1) / tile_.width;
        tileProgram_.run<Key>(memory, (tiles + lanes - 1) / lanes);
    }

private:
    NppiSize tile_;
    std::ptrdiff_t rows_;
    std::ptrdiff_t tilesAcross_;
    std::ptrdiff_t planeStride_;
    std::ptrdiff_t medians_;
    std::size_t bytes_;
    MinMaxProgram columnProgram_;
    MinMaxProgram tileProgram_;
};

}  // namespace zel::host
