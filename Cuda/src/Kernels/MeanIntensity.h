#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "lanes/LaneShared.h"

namespace zel::cuda {

/// The mean of an image, summed in double in a fixed order. Instances: the eight real types.
///
/// @param image   device memory, `height` rows of `width` pixels, at least one of each; the pitch is bytes.
/// @param mean    host memory.
/// @param stream  queues here; the call waits for all work of the device.
/// @throws RuntimeError when device memory runs out or a call is refused; none is left, and the mean is then 0.
template <typename T>
void meanIntensity(const T* image, std::uint64_t pitch, std::uint64_t width, std::uint64_t height, double* mean,
                   cudaStream_t stream);

/// Sums an image; launched as RowReduction.h says. Lanes sum their pixels, blocks the sums of their lanes, and the last
/// block those of all blocks.
template <typename T>
__global__ void cumulateIntensitiesKernel(const T* image, unsigned long long pitch, unsigned long long width,
                                          unsigned long long height, LaneShared<double>* entries,
                                          unsigned int* counter);

}  // namespace zel::cuda
