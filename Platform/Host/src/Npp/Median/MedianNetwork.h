#pragma once

#include <nppdefs.h>

#include <cstddef>
#include <memory>

#include "Npp/Median/MinMaxProgram.h"
#include "Npp/Median/NetworkLayout.h"

namespace zel::host {

/// The network of any mask: programs that find the medians of a row of tiles side by side.
class MedianNetwork {
public:
    /// The network for a region so many pixels wide; the latest few are kept.
    static std::shared_ptr<const MedianNetwork> of(NppiSize mask, std::ptrdiff_t width, std::size_t keyBytes);

    MedianNetwork(NppiSize mask, NppiSize tile, std::size_t keyBytes);

    NetworkLayout layout;

    /// Finds the medians of the first `columns` columns under the rows of pixels at `memory`.
    template <typename Key>
    void run(std::byte* memory, std::ptrdiff_t columns) const {
        columnProgram_.run<Key>(memory, layout.rowStride / NetworkLayout::registerBytes);
        const std::ptrdiff_t tiles = (columns + layout.tile.width - 1) / layout.tile.width;
        tileProgram_.run<Key>(memory, (tiles + layout.lanes() - 1) / layout.lanes());
    }

private:
    MinMaxProgram columnProgram_;
    MinMaxProgram tileProgram_;
};

}  // namespace zel::host
