#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Bundles.h"

// For kernels whose lanes each gather something along a row: the lanes are kept as the launch has them, since what is
// summed in which order, and which of equal values wins, depends on them. The block has one dimension.
namespace zel::cuda {

/// Adjacent lanes of a block: `count` of them, or where not `whole`, fewer.
template <unsigned int count, bool whole>
class LaneBundle {
public:
    explicit LaneBundle(unsigned int first, unsigned int lanes = count) : first_(first), lanes_(lanes) {}

    /// A value for each lane, all equal to begin with.
    template <class T>
    __forceinline__ BundleValues<T, count> fill(T value) const {
        return WholeBundle<count>{first_}.fill(value);
    }

    /// Calls body(i, x) for the columns x of each lane in turn: from the lane's own number on, in steps of the block's
    /// size, below `width`. The lane's values are at [i].
    template <class Body>
    __forceinline__ void eachColumn(std::uint64_t width, Body body) const {
        std::uint64_t x = first_;
        if constexpr (whole) {
            for (; x + count <= width; x += blockDim.x) {
#pragma omp simd
                for (unsigned int i = 0; i < count; ++i) body(i, x + i);
            }
        }
        for (; x < width; x += blockDim.x) {
            const auto left = static_cast<unsigned int>(width - x < lanes_ ? width - x : lanes_);
#pragma omp simd
            for (unsigned int i = 0; i < left; ++i) body(i, x + i);
        }
    }

    /// Calls body(i, t) for each lane, t being its number in the block.
    template <class Body>
    __forceinline__ void each(Body body) const {
        for (unsigned int i = 0; i < lanes_; ++i) body(i, first_ + i);
    }

private:
    unsigned int first_, lanes_;
};

/// As many lanes as blocks have, so that a row is read once and in its order: memory that is read with gaps comes at
/// half its rate, which costs more than gathered values that do not fit into registers.
inline constexpr unsigned int laneBundle = 64;

/// Calls body(lane) for the lanes of the block, in bundles. The body is generic: bundles come in two types.
template <class Body>
__forceinline__ void forEachLane(Body body) {
    unsigned int lane = 0;
    for (; lane + laneBundle <= blockDim.x; lane += laneBundle) body(LaneBundle<laneBundle, true>(lane));
    if (lane < blockDim.x) body(LaneBundle<laneBundle, false>(lane, blockDim.x - lane));
}

}  // namespace zel::cuda
