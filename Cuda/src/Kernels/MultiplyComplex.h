#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Multiplies two spectra pixel by pixel, out = a * b * scale, as a convolution does in the frequency domain.
/// Transforms are not normalised, so their factor goes into the scale, which is multiplied last.
///
/// Instances: <float, float2> and <double, double2>, real type and pixel type.
///
/// @param a, b    device memory, `depth` slices of `height` rows of `width` pixels, each with its own pitches in bytes.
/// @param out     shaped like them; may be either or both of them. In place of b the factors change places, so that an
///                imaginary part may be rounded otherwise. Bytes behind a row's end are left alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename R, typename P>
void multiplyComplexAndScale(const P* a, std::uint64_t aPitch, std::uint64_t aSlicePitch, const P* b,
                             std::uint64_t bPitch, std::uint64_t bSlicePitch, P* out, std::uint64_t outPitch,
                             std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                             std::uint64_t depth, R scale, cudaStream_t stream);

/// One slice each, launched as RowLaunch.h says; the in-place forms write to a. Those without a scale are for callers
/// of their own.
template <typename P>
__global__ void multiplyComplexKernel(const P* a, unsigned long long aPitch, const P* b, unsigned long long bPitch,
                                      P* out, unsigned long long outPitch, unsigned long long width);
template <typename P>
__global__ void multiplyComplexInsituKernel(P* a, unsigned long long aPitch, const P* b, unsigned long long bPitch,
                                            unsigned long long width);
template <typename R, typename P>
__global__ void multiplyComplexAndScaleKernel(const P* a, unsigned long long aPitch, const P* b,
                                              unsigned long long bPitch, P* out, unsigned long long outPitch,
                                              unsigned long long width, R scale);
template <typename R, typename P>
__global__ void multiplyComplexAndScaleInsituKernel(P* a, unsigned long long aPitch, const P* b,
                                                    unsigned long long bPitch, unsigned long long width, R scale);

}  // namespace zel::cuda
