#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Multiplies two images pixel by pixel, out = a * b. Instances: float and double.
///
/// @param a, b    device memory, `depth` slices of `height` rows of `width` pixels, each with its own pitches in bytes.
/// @param out     shaped like them; may be either or both of them. Bytes behind a row's end are left alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T>
void multiplyImage(const T* a, std::uint64_t aPitch, std::uint64_t aSlicePitch, const T* b, std::uint64_t bPitch,
                   std::uint64_t bSlicePitch, T* out, std::uint64_t outPitch, std::uint64_t outSlicePitch,
                   std::uint64_t width, std::uint64_t height, std::uint64_t depth, cudaStream_t stream);

/// One slice each, launched as RowLaunch.h says; the second one writes to a. Instances: float, double, and double times
/// float, which no launcher reaches.
template <typename T, typename U>
__global__ void multiplyImageKernel(const T* a, unsigned long long aPitch, const U* b, unsigned long long bPitch,
                                    T* out, unsigned long long outPitch, unsigned long long width);
template <typename T, typename U>
__global__ void multiplyImageInsituKernel(T* a, unsigned long long aPitch, const U* b, unsigned long long bPitch,
                                          unsigned long long width);

}  // namespace zel::cuda
