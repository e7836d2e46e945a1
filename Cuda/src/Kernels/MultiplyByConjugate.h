#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Multiplies a spectrum pixel by pixel by the conjugate of another one, out = a * conj(b) * scale, as a correlation
/// does in the frequency domain. Transforms are not normalised, so their factor goes into the scale, which is
/// multiplied last.
///
/// Instances: <float, float2> and <double, double2>, real type and pixel type.
///
/// @param a, b    device memory, `depth` slices of `height` rows of `width` pixels, each with its own pitches in bytes.
/// @param out     shaped like them; may be either or both of them: the result is the same. Bytes behind a row's end are
///                left alone.
/// @param stream  queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename R, typename P>
void multiplyByConjugateAndScale(const P* a, std::uint64_t aPitch, std::uint64_t aSlicePitch, const P* b,
                                 std::uint64_t bPitch, std::uint64_t bSlicePitch, P* out, std::uint64_t outPitch,
                                 std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                                 std::uint64_t depth, R scale, cudaStream_t stream);

/// One slice each, launched as RowLaunch.h says; the in-place forms write to a, those with a 2 to b. Those without a
/// scale are for callers of their own.
template <typename P>
__global__ void multiplyByConjugateKernel(const P* a, unsigned long long aPitch, const P* b, unsigned long long bPitch,
                                          P* out, unsigned long long outPitch, unsigned long long width);
template <typename P>
__global__ void multiplyByConjugateInsituKernel(P* a, unsigned long long aPitch, const P* b, unsigned long long bPitch,
                                                unsigned long long width);
template <typename P>
__global__ void multiplyByConjugateInsitu2Kernel(const P* a, unsigned long long aPitch, P* b, unsigned long long bPitch,
                                                 unsigned long long width);
template <typename R, typename P>
__global__ void multiplyByConjugateAndScaleKernel(const P* a, unsigned long long aPitch, const P* b,
                                                  unsigned long long bPitch, P* out, unsigned long long outPitch,
                                                  unsigned long long width, R scale);
template <typename R, typename P>
__global__ void multiplyByConjugateAndScaleInsituKernel(P* a, unsigned long long aPitch, const P* b,
                                                        unsigned long long bPitch, unsigned long long width, R scale);
template <typename R, typename P>
__global__ void multiplyByConjugateAndScaleInsitu2Kernel(const P* a, unsigned long long aPitch, P* b,
                                                         unsigned long long bPitch, unsigned long long width, R scale);

}  // namespace zel::cuda
