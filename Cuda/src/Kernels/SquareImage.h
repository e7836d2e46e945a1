#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Squares an image pixel by pixel. Instances: float and double.
///
/// @param in      device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes.
/// @param out     shaped like it with its own pitches; may be the same image. Bytes behind a row's end are left alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T>
void squareImage(const T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, T* out, std::uint64_t outPitch,
                 std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                 cudaStream_t stream);

/// One slice each, launched as RowLaunch.h says.
template <typename T>
__global__ void squareImageKernel(const T* in, unsigned long long inPitch, T* out, unsigned long long outPitch,
                                  unsigned long long width);
template <typename T>
__global__ void squareImageInsituKernel(T* image, unsigned long long pitch, unsigned long long width);

}  // namespace zel::cuda
