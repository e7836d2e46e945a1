#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

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
