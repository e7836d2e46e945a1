#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Standardises an image, out = (in - mean) / deviation, in double whatever the pixel type. Instances: float, double.
///
/// @param in         device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes.
/// @param out        shaped like it with its own pitches; may be the same image. Bytes behind a row's end are left
///                   alone.
/// @param deviation  0 gives infinities or NaN.
/// @param stream     queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T>
void standardization(const T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, T* out, std::uint64_t outPitch,
                     std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                     double mean, double deviation, cudaStream_t stream);

// One slice each, launched as RowLaunch.h says.

template <typename T>
__global__ void standardization2dKernel(const T* in, unsigned long long inPitch, T* out, unsigned long long outPitch,
                                        unsigned long long width, double mean, double deviation);
template <typename T>
__global__ void standardization2dInsituKernel(T* image, unsigned long long pitch, unsigned long long width, double mean,
                                              double deviation);

// No launcher reaches these. By the mean and the mean square of each pixel's surroundings, out = (in - mean) / d with d
// the square root of their variance, 1e-6 where that is below 1e-12; and from double to float.

template <typename T>
__global__ void standardization2dKernel(const T* in, unsigned long long inPitch, const T* means,
                                        unsigned long long meansPitch, const T* meanSquares,
                                        unsigned long long meanSquaresPitch, T* out, unsigned long long outPitch,
                                        unsigned long long width);
template <typename T>
__global__ void standardization2dInsituKernel(T* image, unsigned long long pitch, const T* means,
                                              unsigned long long meansPitch, const T* meanSquares,
                                              unsigned long long meanSquaresPitch, unsigned long long width);
template <typename From, typename To>
__global__ void normalizeAndConvert2dKernel(const From* in, unsigned long long inPitch, To* out,
                                            unsigned long long outPitch, unsigned long long width, double mean,
                                            double deviation);

}  // namespace zel::cuda
