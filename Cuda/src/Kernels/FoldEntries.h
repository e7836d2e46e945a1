#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "lanes.h"

namespace zel::cuda {

/// The end of a reduction's kernel: one lane folds the entries that the block's lanes have left in shared memory into
/// the block's own, in the order of the lanes. The last block to come so far folds those of all blocks into the first
/// one, in the order of the blocks.
///
/// @tparam Rules   of the kind of entry: set(to, from), fold(into, from), and isEmpty(entry), for an entry that
///                 need not be published. They copy field by field, since volatile structures cannot be copied whole.
/// @param counter  of the blocks that have published theirs, 0 at the launch.
template <typename Rules, typename Entry>
__device__ __forceinline__ void foldEntries(const Entry* laneEntries, LaneShared<Entry>* entries,
                                            unsigned int* counter) {
    blockBarrier();
    onFirstLane([=] {
        Entry mine;
        Rules::set(mine, laneEntries[0]);
        for (unsigned int lane = 1; lane < blockDim.x; ++lane) Rules::fold(mine, laneEntries[lane]);
        if (!Rules::isEmpty(mine)) Rules::set(entries[blockNumber()], mine);
        // What was published has to be seen by the block that counts as the last one.
        __threadfence();
        const auto blocks = static_cast<unsigned int>(blockCount());
        if (atomicInc(counter, blocks) != blocks - 1) return;
        Entry all;
        Rules::set(all, entries[0]);
        for (unsigned int block = 1; block < blocks; ++block) Rules::fold(all, entries[block]);
        Rules::set(entries[0], all);
    });
}

}  // namespace zel::cuda
