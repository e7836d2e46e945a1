#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <cstdint>

namespace zel::cuda {

/// The address `bytes` further on: images are walked by their pitches, which are bytes.
template <typename T>
__host__ __device__ __forceinline__ T* offsetBytes(T* address, std::uint64_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(address) + bytes);
}

}  // namespace zel::cuda
