#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// The place of the calling thread's block among all blocks of the grid, and how many there are.
__device__ __forceinline__ std::uint64_t blockNumber() {
    return blockIdx.x + std::uint64_t{gridDim.x} * (blockIdx.y + std::uint64_t{gridDim.y} * blockIdx.z);
}
__device__ __forceinline__ std::uint64_t blockCount() {
    return std::uint64_t{gridDim.x} * gridDim.y * gridDim.z;
}

}  // namespace zel::cuda
