#pragma once

#include <cuda_runtime.h>

#include <cfloat>
#include <cstdint>

#include "lanes/LaneShared.h"

namespace zel::cuda {

/// The extrema of an image and where its maximum lies, in pixels; the same in host and device memory. Neutral as made:
/// that is also the result of an image of NaN.
struct PositionMaximalIntensityInfo {
    std::uint64_t positionX = 0;
    std::uint64_t positionY = 0;
    double minimum = DBL_MAX;
    double maximum = -DBL_MAX;
};

/// Finds the extrema of an image and the position of its maximum. NaN is ignored. Among equal maxima the lowest row
/// wins, in it the lowest x modulo 64 (or modulo the width of a smaller image), and among those the lowest x.
/// Instances: float and double.
///
/// @param image   device memory, `height` rows of `width` pixels, at least one of each; the pitch is bytes.
/// @param info    host memory.
/// @param stream  queues here; the call waits for all work of the device.
/// @throws RuntimeError when device memory runs out or a call is refused; none is left, and the record is then neutral,
///         or what a failed copy of the result left.
template <typename T>
void findPositionMaximalIntensity(const T* image, std::uint64_t pitch, std::uint64_t width, std::uint64_t height,
                                  PositionMaximalIntensityInfo* info, cudaStream_t stream);

/// Launched as RowReduction.h says.
template <typename T>
__global__ void findPositionMaximalIntensityKernel(const T* image, unsigned long long pitch, unsigned long long width,
                                                   unsigned long long height,
                                                   LaneShared<PositionMaximalIntensityInfo>* entries,
                                                   unsigned int* counter);

}  // namespace zel::cuda
