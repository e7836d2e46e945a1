#pragma once

#include <cuda_runtime.h>

namespace amnlm {

/// Blocks of 8 threads that cover `count` items along an axis.
inline unsigned int blocksOf8(int count) {
    return static_cast<unsigned int>((count + 7) / 8);
}

/// A launch on the default stream with a thread for each voxel of an image, in blocks of 8 x 8 x 8.
inline cudaLaunchConfig_t voxelLaunch(int nx, int ny, int nz) {
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(blocksOf8(nx), blocksOf8(ny), blocksOf8(nz));
    config.blockDim = dim3(8, 8, 8);
    return config;
}

}  // namespace amnlm
