#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Bundles.h"

namespace zel::cuda {

template <class Body>
__device__ __forceinline__ void forEachItemBundle(std::uint64_t count, std::uint64_t offset, std::uint64_t, Body body) {
    const std::uint64_t item = offset + std::uint64_t{blockIdx.x} * blockDim.x + threadIdx.x;
    if (item < count) body(ScalarBundle{item});
}

template <class Body>
__device__ __forceinline__ void forEachItem(std::uint64_t count, Body body) {
    const std::uint64_t item = std::uint64_t{blockIdx.x} * blockDim.x + threadIdx.x;
    if (item < count) body(item);
}

}  // namespace zel::cuda
