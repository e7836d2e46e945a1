#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

template <class T>
struct BundleValues {
    T value;

    __device__ __forceinline__ T& operator[](unsigned int) { return value; }
    __device__ __forceinline__ const T& operator[](unsigned int) const { return value; }
};

struct ScalarBundle {
    static constexpr unsigned int capacity = 1;
    static constexpr unsigned int lanes = 1;
    std::uint64_t first;

    template <class T>
    __device__ __forceinline__ BundleValues<T> fill(T value) const {
        return {value};
    }

    template <class Body>
    __device__ __forceinline__ void each(Body body) const {
        body(0u);
    }
};

template <class Body>
__device__ __forceinline__ void forEachBundle(std::uint64_t count, Body body) {
    for (std::uint64_t item = threadIdx.x; item < count; item += blockDim.x) body(ScalarBundle{item});
}

}  // namespace zel::cuda
