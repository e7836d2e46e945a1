#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// The address `bytes` further on: images are walked by their pitches, which are bytes.
template <typename T>
__host__ __device__ __forceinline__ T* offsetBytes(T* address, std::uint64_t bytes) {
    return reinterpret_cast<T*>(const_cast<char*>(reinterpret_cast<const char*>(address)) + bytes);
}

}  // namespace zel::cuda
