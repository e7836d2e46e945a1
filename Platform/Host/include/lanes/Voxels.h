#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Share.h"

// Words for kernels that do the same for each voxel, whatever the order: no barrier, and no other word beside them.
namespace zel::cuda {

/// Calls body(x, y, z) for each voxel of nx * ny * nz, which the launch covers with a thread for each. `Index` is an
/// integer type that holds the extents; with a short one more lanes go side by side.
template <class Index, class Body>
__forceinline__ void forEachVoxel(Index nx, Index ny, Index nz, Body body) {
    const std::uint64_t height = ny;
    const Share rows = callShare(height * static_cast<std::uint64_t>(nz));
    for (std::uint64_t row = rows.begin; row < rows.end; ++row) {
        const Index y = static_cast<Index>(row % height);
        const Index z = static_cast<Index>(row / height);
#pragma omp simd
        for (Index x = 0; x < nx; ++x) body(x, y, z);
    }
}

}  // namespace zel::cuda
