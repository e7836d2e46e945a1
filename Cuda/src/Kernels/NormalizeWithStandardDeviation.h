#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Divides a correlation by the local standard deviation of the image, pixel by pixel. With the local mean m and mean
/// square q, v = max(0, q) - m m: below the threshold the result is the replacement, else in / sqrt(v), in double for
/// the quotient; then it is limited to [low, high]. Instances: float and double.
///
/// @param in                  device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes.
/// @param means, meanSquares  shaped like it with their own pitches.
/// @param out                 the same; may be `in`. Bytes behind a row's end are left alone.
/// @param stream              queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename T>
void normalizeWithStandardDeviation(T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, const T* means,
                                    std::uint64_t meansPitch, std::uint64_t meansSlicePitch, const T* meanSquares,
                                    std::uint64_t meanSquaresPitch, std::uint64_t meanSquaresSlicePitch, T threshold,
                                    T replacement, T low, T high, T* out, std::uint64_t outPitch,
                                    std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                                    std::uint64_t depth, cudaStream_t stream);

struct InsituTag {};
struct NonInsituTag {};

/// One slice; launched as RowLaunch.h says. With InsituTag the result goes to `in`, and `out` is not used.
template <typename Tag, typename T>
__global__ void normalizeWithStandardDeviation2dKernel(T* in, unsigned long long inPitch, const T* means,
                                                       unsigned long long meansPitch, const T* meanSquares,
                                                       unsigned long long meanSquaresPitch, T threshold, T replacement,
                                                       T low, T high, T* out, unsigned long long outPitch,
                                                       unsigned long long width);

}  // namespace zel::cuda
