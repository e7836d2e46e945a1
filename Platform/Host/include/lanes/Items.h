#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>

#include "Bundles.h"
#include "Share.h"

// Words for kernels that do the same for each item, whatever the order: no barrier, and no other word beside them. The
// launch has one dimension and a thread for each item.
namespace zel::cuda {

/// Calls body(bundle) for bundles of the items offset, offset + 1, ... below `count`, as many as the launch has
/// threads. Items lie in rows of `rowLength`, and a bundle never leaves its row. The body is generic, as for
/// forEachBundle().
template <class Body>
__forceinline__ void forEachItemBundle(std::uint64_t count, std::uint64_t offset, std::uint64_t rowLength, Body body) {
    const std::uint64_t last = std::min(count, offset + blockCount() * blockDim.x);
    if (last <= offset) return;
    // Shares of whole bundles: smaller ones are slower by half.
    const Share share = callShare((last - offset - 1) / largeBundle + 1);
    const std::uint64_t end = std::min(last, offset + share.end * largeBundle);
    for (std::uint64_t item = offset + share.begin * largeBundle; item < end;) {
        const std::uint64_t rowEnd = std::min(end, (item / rowLength + 1) * rowLength);
        forEachBundleOf(item, rowEnd, body);
        item = rowEnd;
    }
}

/// Calls body(i) for the items i = 0 ... count - 1.
template <class Body>
__forceinline__ void forEachItem(std::uint64_t count, Body body) {
    const Share share = callShare(count);
#pragma omp simd
    for (std::uint64_t item = share.begin; item < share.end; ++item) body(item);
}

}  // namespace zel::cuda
