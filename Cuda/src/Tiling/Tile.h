#pragma once

#include "zel/BlockCutterManager.h"
#include "zel/ImageModelSizeProxy.h"

namespace zel::cuda {

/// One tile of an image: what is read, and the part of it whose results are good.
struct Tile {
    using Size = Vector3<unsigned>;

    Tile(const BlockCutterManager& cutter, unsigned i, unsigned j, unsigned k)
        : origin(cutter.getBlockOrigin(i, j, k)),
          size(cutter.getBlockSize(i, j, k)),
          previous(cutter.getBlockPreviousOverlapSize(i, j, k)),
          next(cutter.getBlockNextOverlapSize(i, j, k)) {}

    bool hasOverlap() const { return previous != Size{} || next != Size{}; }

    Size validOrigin() const { return {origin.x + previous.x, origin.y + previous.y, origin.z + previous.z}; }
    Size validSize() const {
        return {size.x - previous.x - next.x, size.y - previous.y - next.y, size.z - previous.z - next.z};
    }

    /// The tile with its margins, in the input.
    ImageModelSizeProxy sourceIn(const ImageModel& image) const {
        return {&image, origin.x, size.x, origin.y, size.y, origin.z, size.z, 0, 1, 0, 1};
    }
    /// The tile without its margins, in the output.
    ImageModelSizeProxy targetIn(ImageModel& image) const {
        const Size from = validOrigin();
        const Size valid = validSize();
        return {&image, from.x, valid.x, from.y, valid.y, from.z, valid.z, 0, 1, 0, 1};
    }

    Size origin;
    Size size;      ///< with the margins
    Size previous;  ///< margin before the good part
    Size next;      ///< margin behind it
};

}  // namespace zel::cuda
