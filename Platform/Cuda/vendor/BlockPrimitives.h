#pragma once

#include <cuda_runtime.h>

/// What the words of a GPU are made of and only its compiler knows.
namespace zel::cuda {

__device__ __forceinline__ void blockBarrier() {
    __syncthreads();
}

__device__ __forceinline__ void* blockSharedMemory() {
    extern __shared__ double2 zelDynamicSharedMemory[];
    return zelDynamicSharedMemory;
}

}  // namespace zel::cuda
