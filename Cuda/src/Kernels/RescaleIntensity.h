#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Maps intensities linearly from [inMin, inMax] to [outMin, outMax], in double with one rounding a pixel. Pixels
/// outside the input range map outside the output range. An input range of one value maps it to outMin; a range that is
/// turned round turns the image's intensities round. Instances: float and double; the result is float.
///
/// @param in      device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes.
/// @param out     shaped like in, with its own pitches; of float it may be the input. Bytes behind a row's end are left
///                alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T>
void rescaleIntensity(const T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, float* out,
                      std::uint64_t outPitch, std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                      std::uint64_t depth, double inMin, double inMax, double outMin, double outMax,
                      cudaStream_t stream);

/// One slice each, launched as RowLaunch.h says; inMax is not inMin. Instances: float and double, and the conversion
/// from double to float.
template <typename T>
__global__ void rescaleIntensity2dKernel(const T* in, unsigned long long inPitch, T* out, unsigned long long outPitch,
                                         unsigned long long width, double inMin, double inMax, double outMin,
                                         double outMax);
template <typename T>
__global__ void rescaleIntensity2dInsituKernel(T* image, unsigned long long pitch, unsigned long long width,
                                               double inMin, double inMax, double outMin, double outMax);
template <typename From, typename To>
__global__ void rescaleIntensityAndConvert2dKernel(const From* in, unsigned long long inPitch, To* out,
                                                   unsigned long long outPitch, unsigned long long width, double inMin,
                                                   double inMax, double outMin, double outMax);

}  // namespace zel::cuda
