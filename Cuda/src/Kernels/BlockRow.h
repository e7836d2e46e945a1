#pragma once

#include <cuda_runtime.h>

#include "Utilities_CUDA/OffsetBytes.h"

namespace zel::cuda {

/// The row of an image that the block of a row kernel owns; the pitch is bytes.
template <typename T>
__device__ __forceinline__ T* blockRow(T* image, unsigned long long pitch) {
    return offsetBytes(image, pitch * blockIdx.x);
}

}  // namespace zel::cuda
