#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Memory that lanes of a block exchange values through: read and written at each access.
template <class T>
using LaneShared = volatile T;

/// All lanes of the block have come here before any goes on. Not inside another word.
__device__ __forceinline__ void blockBarrier() {
    __syncthreads();
}

/// The dynamic shared memory of the launch, as an array of T.
template <class T>
__device__ __forceinline__ T* dynamicShared() {
    extern __shared__ double2 zelDynamicSharedMemory[];
    return reinterpret_cast<T*>(zelDynamicSharedMemory);
}

/// The block's place among all blocks of the grid, and how many there are.
__device__ __forceinline__ std::uint64_t blockNumber() {
    return blockIdx.x + std::uint64_t{gridDim.x} * (blockIdx.y + std::uint64_t{gridDim.y} * blockIdx.z);
}
__device__ __forceinline__ std::uint64_t blockCount() {
    return std::uint64_t{gridDim.x} * gridDim.y * gridDim.z;
}

/// Calls body() once a block.
template <class Body>
__device__ __forceinline__ void onFirstLane(Body body) {
    if (threadIdx.x == 0 && threadIdx.y == 0 && threadIdx.z == 0) body();
}

/// For device functions that walk over items themselves: the lane's first item, and the way to its next.
__device__ __forceinline__ std::uint64_t firstItem() {
    return threadIdx.x;
}
__device__ __forceinline__ std::uint64_t itemStride() {
    return blockDim.x;
}

/// Calls body(x) for x = 0 ... width - 1, dealt to the lanes of the block.
template <class Body>
__device__ __forceinline__ void forEachColumn(std::uint64_t width, Body body) {
    for (std::uint64_t x = threadIdx.x; x < width; x += blockDim.x) body(x);
}

}  // namespace zel::cuda
