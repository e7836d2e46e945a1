#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Sets every pixel to one value. Instances: the eight real types.
///
/// @param image   device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes. Bytes behind a
///                row's end are left alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused.
template <typename T>
void resetImage(T* image, std::uint64_t pitch, std::uint64_t slicePitch, T value, std::uint64_t width,
                std::uint64_t height, std::uint64_t depth, cudaStream_t stream);

/// One slice; launched as RowLaunch.h says.
template <typename T>
__global__ void resetImage2dKernel(T* image, unsigned long long pitch, T value, unsigned long long width);

}  // namespace zel::cuda
