#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "LaneShared.h"

namespace zel::cuda {

/// All lanes of the block have come here before any goes on. Not inside another word.
__forceinline__ void blockBarrier() {}

/// The dynamic shared memory of the launch, as an array of T.
template <class T>
__forceinline__ T* dynamicShared() {
    return static_cast<T*>(zel::host::blockSharedMemory);
}

/// Calls body() once a block.
template <class Body>
__forceinline__ void onFirstLane(Body body) {
    body();
}

/// For device functions that walk over items themselves: the lane's first item, and the way to its next.
__forceinline__ std::uint64_t firstItem() {
    return 0;
}
__forceinline__ std::uint64_t itemStride() {
    return 1;
}

/// Calls body(x) for x = 0 ... width - 1, dealt to the lanes of the block.
template <class Body>
__forceinline__ void forEachColumn(std::uint64_t width, Body body) {
#pragma omp simd
    for (std::uint64_t x = 0; x < width; ++x) body(x);
}

}  // namespace zel::cuda
