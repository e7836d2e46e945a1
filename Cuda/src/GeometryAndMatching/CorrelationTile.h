#pragma once

#include <algorithm>
#include <cstdint>

namespace zel::cuda {

/// Along one axis, the block of a tiled correlation: a window of the extended image, which is the image with
/// `centreOffset` zeros before it and `trailingOffset` behind it. Position x of the extended image is pixel
/// x - centreOffset of the image.
struct CorrelationBlock {
    std::uint64_t origin;  ///< in the extended image
    std::uint64_t size;
};

/// What all blocks of an axis have in common.
struct CorrelationAxis {
    std::uint64_t imageSize;
    std::uint64_t centreOffset;    ///< of the template's anchor from its first pixel
    std::uint64_t trailingOffset;  ///< of its last pixel from the anchor
    bool removesMeans;

    /// Position of a block's part of the image in the tile's buffer.
    struct Window {
        std::uint64_t target;  ///< in the buffer
        std::uint64_t start;   ///< in the image
        std::uint64_t size;
    };
    Window windowOf(const CorrelationBlock& block) const {
        const std::uint64_t target = centreOffset > block.origin ? centreOffset - block.origin : 0;
        const std::uint64_t start = block.origin > centreOffset ? block.origin - centreOffset : 0;
        return {target, start, std::min(block.size - target, imageSize - start)};
    }

    /// The positions whose template window lies wholly in the block, and with it, where means are removed, the windows
    /// of the local means that it needs. Those of all blocks make up the image.
    struct Part {
        std::uint64_t skip;   ///< in the buffer
        std::uint64_t start;  ///< in the image
        std::uint64_t size;
    };
    Part usablePartOf(const CorrelationBlock& block) const {
        const std::uint64_t margins = centreOffset + trailingOffset;
        if (!removesMeans) return clipped(0, block, block.size - margins);
        const bool isFirst = block.origin == 0;
        const bool isLast = block.origin + block.size == imageSize + margins;
        const std::uint64_t skip = isFirst ? 0 : trailingOffset;
        return clipped(skip, block, isLast ? imageSize : block.size - 2 * margins + (isFirst ? trailingOffset : 0));
    }

private:
    Part clipped(std::uint64_t skip, const CorrelationBlock& block, std::uint64_t size) const {
        const std::uint64_t start = block.origin + skip;
        return {skip, start, std::min(size, imageSize - start)};
    }
};

}  // namespace zel::cuda
