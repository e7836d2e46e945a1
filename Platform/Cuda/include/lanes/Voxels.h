#pragma once

#include <cuda_runtime.h>

namespace zel::cuda {

template <class Index, class Body>
__device__ __forceinline__ void forEachVoxel(Index nx, Index ny, Index nz, Body body) {
    const Index x = static_cast<Index>(blockIdx.x) * blockDim.x + threadIdx.x;
    const Index y = static_cast<Index>(blockIdx.y) * blockDim.y + threadIdx.y;
    const Index z = static_cast<Index>(blockIdx.z) * blockDim.z + threadIdx.z;
    if (x < nx && y < ny && z < nz) body(x, y, z);
}

}  // namespace zel::cuda
