#pragma once

#include <cstddef>

#include "zel/BlockCutterManager.h"
#include "zel/ImageModelSizeProxy.h"

namespace zel::cuda {

/// One tile of a 2D image: what is read, and the part of it whose results are good.
struct Tile2d {
    using Size = Vector3<unsigned>;

    Tile2d(const BlockCutterManager& cutter, unsigned i, unsigned j)
        : origin(cutter.getBlockOrigin(i, j, 0)),
          size(cutter.getBlockSize(i, j, 0)),
          previous(cutter.getBlockPreviousOverlapSize(i, j, 0)),
          next(cutter.getBlockNextOverlapSize(i, j, 0)) {}

    bool hasOverlap() const { return previous.x > 0 || previous.y > 0 || next.x > 0 || next.y > 0; }

    std::size_t validX() const { return std::size_t{origin.x} + previous.x; }
    std::size_t validY() const { return std::size_t{origin.y} + previous.y; }
    std::size_t validWidth() const { return size.x - previous.x - next.x; }
    std::size_t validHeight() const { return size.y - previous.y - next.y; }

    /// The tile with its margins, in the input.
    ImageModelSizeProxy sourceIn(const ImageModel& image) const {
        return {&image, origin.x, size.x, origin.y, size.y, 0, 1, 0, 1, 0, 1};
    }
    /// The tile without its margins, in the output.
    ImageModelSizeProxy targetIn(ImageModel& image) const {
        return {&image, validX(), validWidth(), validY(), validHeight(), 0, 1, 0, 1, 0, 1};
    }

    Size origin;
    Size size;      ///< with the margins
    Size previous;  ///< margin before the good part
    Size next;      ///< margin behind it
};

}  // namespace zel::cuda
