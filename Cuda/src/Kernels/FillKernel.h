#pragma once

#include <cuda_runtime.h>

namespace zel::cuda {

/// Writes the mask of a diamond-shaped structuring element: byte (x, y) is 1 where |x - radius| + |y - radius| is at
/// most the radius, else 0.
///
/// @param mask    device memory, (2 radius + 1) rows of (2 radius + 1) bytes without padding.
/// @param radius  a negative one writes nothing.
/// @param stream  queues here.
/// @return        the launch's status, for the caller to check.
cudaError_t fillKernelV4(unsigned char* mask, int radius, cudaStream_t stream);

namespace helper {

/// Launched with one thread.
__global__ void fillKernelV4Kernel(unsigned char* mask, int radius);

}  // namespace helper
}  // namespace zel::cuda
