#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "BlockPrimitives.h"  // blockBarrier()
#include "LaneShared.h"

namespace zel::cuda {

template <class T>
__device__ __forceinline__ T* dynamicShared() {
    return static_cast<T*>(blockSharedMemory());
}

template <class Body>
__device__ __forceinline__ void onFirstLane(Body body) {
    if (threadIdx.x == 0 && threadIdx.y == 0 && threadIdx.z == 0) body();
}

__device__ __forceinline__ std::uint64_t firstItem() {
    return threadIdx.x;
}
__device__ __forceinline__ std::uint64_t itemStride() {
    return blockDim.x;
}

template <class Body>
__device__ __forceinline__ void forEachColumn(std::uint64_t width, Body body) {
    for (std::uint64_t x = threadIdx.x; x < width; x += blockDim.x) body(x);
}

}  // namespace zel::cuda
