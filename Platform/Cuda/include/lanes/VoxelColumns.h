#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Bundles.h"
#include "Voxels.h"

namespace zel::cuda {

template <class Channels, class Body>
__device__ __forceinline__ void forEachVoxelColumn(int nx, int ny, int nz, Channels channels, Body body) {
    forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
        for (int k = 0; k < channels; ++k)
            body(ScalarBundle{static_cast<std::uint64_t>(x) * channels + k}, y, y + 1, z);
    });
}

}  // namespace zel::cuda
