#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "RoundMode.h"

namespace zel::cuda {

/// Converts an image to another pixel type. Integers to wider types are extended, to narrower ones lose their high
/// bits. To floating point and between its types pixels go to the nearest value, ties to even. Floating point to
/// integers is rounded by the mode to 32 bits, where it saturates and NaN gives 0; then the low bits are kept: 300.0 is
/// 44 in an unsigned 8-bit image. Real pixels become complex ones with an imaginary part of 0.
///
/// Instances: (signed or unsigned) 8-bit and 16-bit to float, 32-bit to double, double to float, and float and double
/// to themselves, which copy.
///
/// @param src       device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes.
/// @param dst       shaped like src with its own pitches; must not overlap it. Bytes behind a row's end are left alone.
/// @param mode      a value outside the enumeration does nothing at all.
/// @param stream    queues here and returns without waiting.
/// @throws RuntimeError when a launch is refused.
template <typename From, typename To>
void convertImage(const From* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, To* dst, std::uint64_t dstPitch,
                  std::uint64_t dstSlicePitch, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                  RoundMode mode, cudaStream_t stream);

/// One slice; launched as RowLaunch.h says. Instances: every ordered pair of different real types under every mode, and
/// with TowardZero each real type to float2 and double2, and these two to each other.
template <typename From, typename To, RoundMode mode>
__global__ void convertImage2dKernel(const From* src, unsigned long long srcPitch, To* dst, unsigned long long dstPitch,
                                     unsigned long long width);

}  // namespace zel::cuda
