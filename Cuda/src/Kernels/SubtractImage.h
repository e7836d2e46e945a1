#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Subtracts an image from another one pixel by pixel, out = a - b. Instances: float and double.
///
/// @param a, b    device memory, `depth` slices of `height` rows of `width` pixels, each with its own pitch in bytes.
///                A slice begins where the rows of the one before it end, `height` pitches further on.
/// @param out     shaped like them; may be either or both of them. Bytes behind a row's end are left alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T>
void subtractImage(const T* a, std::uint64_t aPitch, const T* b, std::uint64_t bPitch, T* out, std::uint64_t outPitch,
                   std::uint64_t width, std::uint64_t height, std::uint64_t depth, cudaStream_t stream);

/// As subtractImage() for one value in place of the image b.
template <typename T>
void subtractImageWithValue(const T* in, std::uint64_t inPitch, T value, T* out, std::uint64_t outPitch,
                            std::uint64_t width, std::uint64_t height, std::uint64_t depth, cudaStream_t stream);

/// One slice each, launched as RowLaunch.h says. In-place form 1 writes to a, form 2 to b.
template <typename T>
__global__ void subtractImageKernel(const T* a, unsigned long long aPitch, const T* b, unsigned long long bPitch,
                                    T* out, unsigned long long outPitch, unsigned long long width);
template <typename T>
__global__ void subtractImageInsitu1Kernel(T* a, unsigned long long aPitch, const T* b, unsigned long long bPitch,
                                           unsigned long long width);
template <typename T>
__global__ void subtractImageInsitu2Kernel(const T* a, unsigned long long aPitch, T* b, unsigned long long bPitch,
                                           unsigned long long width);
template <typename T>
__global__ void subtractImageWithValueKernel(const T* in, unsigned long long inPitch, T value, T* out,
                                             unsigned long long outPitch, unsigned long long width);
template <typename T>
__global__ void subtractImageWithValueInsituKernel(T* image, unsigned long long pitch, T value,
                                                   unsigned long long width);

}  // namespace zel::cuda
