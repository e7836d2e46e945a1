#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>

#include "Bundles.h"
#include "Share.h"

// Words for kernels that do the same for each voxel, whatever the order, where rows that lie next to each other share
// some of the work: no barrier, and no other word beside them.
namespace zel::cuda {

/// Calls body(bundle, yBegin, yEnd, z) for bundles of the nx * channels elements of a row, for the rows yBegin to
/// yEnd - 1 of slice z: together each voxel once, which the launch covers with a thread for each. The channels of a
/// voxel lie side by side; here a bundle's column is some rows high, on a GPU it is one row. The body is generic, as
/// for forEachBundle().
template <class Channels, class Body>
__forceinline__ void forEachVoxelColumn(int nx, int ny, int nz, Channels channels, Body body) {
    constexpr std::uint64_t rows = 32;  // enough to share work, few enough to deal
    const std::uint64_t width = static_cast<std::uint64_t>(nx) * static_cast<std::uint64_t>(channels);
    const std::uint64_t height = ny;
    const std::uint64_t bundles = (width + largeBundle - 1) / largeBundle;
    const std::uint64_t strips = (height + rows - 1) / rows;
    const Share share = callShare(bundles * strips * static_cast<std::uint64_t>(nz));
    for (std::uint64_t i = share.begin; i < share.end; ++i) {
        const std::uint64_t first = i % bundles * largeBundle, strip = i / bundles % strips;
        const int yBegin = static_cast<int>(strip * rows), yEnd = std::min(ny, yBegin + static_cast<int>(rows));
        const int z = static_cast<int>(i / bundles / strips);
        forEachBundleOf(first, std::min(width, first + largeBundle),
                        [&](const auto bundle) { body(bundle, yBegin, yEnd, z); });
    }
}

}  // namespace zel::cuda
