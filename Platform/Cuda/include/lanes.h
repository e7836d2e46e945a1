#pragma once

#include <cuda_runtime.h>

#include <cstdint>

/// The words in which kernels say what the threads of a block do. Here a lane is a thread, and each word a thin layer
/// over threadIdx.
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

/// Calls body() once a block.
template <class Body>
__device__ __forceinline__ void onFirstLane(Body body) {
    if (threadIdx.x == 0) body();
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

/// One value for each item of a bundle.
template <class T>
struct BundleValues {
    T value;

    __device__ __forceinline__ T& operator[](unsigned int) { return value; }
    __device__ __forceinline__ const T& operator[](unsigned int) const { return value; }
};

/// `lanes` adjacent items whose values stay in registers: one here.
struct ScalarBundle {
    static constexpr unsigned int capacity = 1;
    static constexpr unsigned int lanes = 1;
    std::uint64_t first;  ///< the first lane's item

    /// A value for each item, all equal to begin with.
    template <class T>
    __device__ __forceinline__ BundleValues<T> fill(T value) const {
        return {value};
    }

    /// Calls body(lane) for each lane; its item is first + lane.
    template <class Body>
    __device__ __forceinline__ void each(Body body) const {
        body(0u);
    }
};

/// Calls body(bundle) for bundles that together hold the items 0 ... count - 1. The body is generic: bundles come in
/// several types. For work with an inner loop over taps or terms, whose sums then stay in registers.
template <class Body>
__device__ __forceinline__ void forEachBundle(std::uint64_t count, Body body) {
    for (std::uint64_t item = threadIdx.x; item < count; item += blockDim.x) body(ScalarBundle{item});
}

}  // namespace zel::cuda
