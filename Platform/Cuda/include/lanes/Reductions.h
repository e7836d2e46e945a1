#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Bundles.h"

namespace zel::cuda {

struct ScalarLane {
    template <class T>
    __device__ __forceinline__ BundleValues<T> fill(T value) const {
        return {value};
    }

    template <class Body>
    __device__ __forceinline__ void eachColumn(std::uint64_t width, Body body) const {
        for (std::uint64_t x = threadIdx.x; x < width; x += blockDim.x) body(0u, x);
    }

    template <class Body>
    __device__ __forceinline__ void each(Body body) const {
        body(0u, threadIdx.x);
    }
};

template <class Body>
__device__ __forceinline__ void forEachLane(Body body) {
    body(ScalarLane{});
}

}  // namespace zel::cuda
