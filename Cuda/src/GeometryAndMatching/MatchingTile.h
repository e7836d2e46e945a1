#pragma once

#include <algorithm>

#include "MatchingGeometry.h"
#include "Tiling/Tile.h"

namespace zel::cuda {

/// One tile of a matching. Blocks cut the image grown by the margins that the box needs; this is what one of them reads
/// of the image itself, and the voxels that it gives scores for.
struct MatchingTile {
    /// @param half  margin before the image, half the box.
    MatchingTile(const Tile& block, const Size3& half, const Size3& imageSize)
        : origin{block.origin.x, block.origin.y, block.origin.z},
          start(origin),
          size{block.size.x, block.size.y, block.size.z} {
        const Size3 previous = {block.previous.x, block.previous.y, block.previous.z};
        const Size3 next = {block.next.x, block.next.y, block.next.z};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            coreSize[axis] = std::min(size[axis] - previous[axis] - next[axis], imageSize[axis] - origin[axis]);
            if (previous[axis] == 0) {
                size[axis] -= half[axis];
                at[axis] = half[axis];
            } else if (half[axis] <= start[axis]) {
                start[axis] -= half[axis];
            } else {
                at[axis] = half[axis] - start[axis];
                size[axis] -= at[axis];
                start[axis] = 0;
            }
            size[axis] = std::min(size[axis], imageSize[axis] - start[axis]);
        }
    }

    Size3 origin;      ///< of the voxels that get scores
    Size3 coreSize{};  ///< how many there are
    Size3 start;       ///< of what is read
    Size3 size;        ///< of what is read
    Size3 at{};        ///< where that goes in the tile's buffer
};

}  // namespace zel::cuda
