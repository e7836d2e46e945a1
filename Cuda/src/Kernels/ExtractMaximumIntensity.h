#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Takes one image of a series into a running maximum, pixel by pixel, and notes which image each maximum came from.
/// Equal pixels keep the earlier index, NaN is never taken. Instances: float and double images; indices of unsigned 8,
/// 16 and 32 bits.
///
/// @param image    device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes. Doubles are
///                 compared as such and stored rounded.
/// @param index    of this image.
/// @param maximum  shaped like the image with pitches of its own, set by the caller before the first image; as indices.
///                 Pixels that are not taken are left alone, as are bytes behind a row's end.
/// @param stream   queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T, typename L>
void extractMaximumIntensity(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, L index, float* maximum,
                             std::uint64_t maximumPitch, std::uint64_t maximumSlicePitch, L* indices,
                             std::uint64_t indicesPitch, std::uint64_t indicesSlicePitch, std::uint64_t width,
                             std::uint64_t height, std::uint64_t depth, cudaStream_t stream);

/// One slice; launched as RowLaunch.h says. M is float.
template <typename T, typename M, typename L>
__global__ void extractMaximumIntensity2dKernel(const T* image, unsigned long long pitch, L index, M* maximum,
                                                unsigned long long maximumPitch, L* indices,
                                                unsigned long long indicesPitch, unsigned long long width);

}  // namespace zel::cuda
