#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>

namespace zel::cuda {

/// Filters each line of an image along one axis with a kernel of float taps; behind its ends a line goes on mirrored,
/// the edge pixel repeated. Position p becomes the sum over k of tap k times pixel p + k - tapCount / 2, summed in
/// float in the order of the taps, one fused multiply-add each; of double pixels each step is one in double, rounded
/// back to float. Integers receive the sum truncated through 32 bits, of which they keep the low ones.
///
/// Instances: each of the eight real types to itself, to float, and from float.
///
/// @param src         device memory, `depth` slices of `height` rows of `width` pixels; pitches in bytes.
/// @param dst         shaped like src with its own pitches, which may be src itself. Bytes behind a row's end are left
///                    alone.
/// @param taps        device memory, `tapCount` of them.
/// @param stream      queues here; returns when the scratch memory, which it frees, is no longer in use.
/// @param maxBlocks   multiprocessors of the device, the most blocks to launch.
/// @param maxThreads  cores of a multiprocessor, the most threads of a block.
/// @throws RuntimeError when device memory for the scratch lines runs out; nothing is launched then. The launch itself
///         goes unchecked.
template <typename TIn, typename TOut>
void convolution1dOnRows(const TIn* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, TOut* dst,
                         std::uint64_t dstPitch, std::uint64_t dstSlicePitch, std::uint64_t width, std::uint64_t height,
                         std::uint64_t depth, const float* taps, std::uint64_t tapCount, cudaStream_t stream,
                         unsigned int maxBlocks, unsigned int maxThreads);

/// As convolution1dOnRows, along y.
template <typename TIn, typename TOut>
void convolution1dOnColumns(const TIn* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, TOut* dst,
                            std::uint64_t dstPitch, std::uint64_t dstSlicePitch, std::uint64_t width,
                            std::uint64_t height, std::uint64_t depth, const float* taps, std::uint64_t tapCount,
                            cudaStream_t stream, unsigned int maxBlocks, unsigned int maxThreads);

/// As convolution1dOnRows, along z.
template <typename TIn, typename TOut>
void convolution1dOnZLines(const TIn* src, std::uint64_t srcPitch, std::uint64_t srcSlicePitch, TOut* dst,
                           std::uint64_t dstPitch, std::uint64_t dstSlicePitch, std::uint64_t width,
                           std::uint64_t height, std::uint64_t depth, const float* taps, std::uint64_t tapCount,
                           cudaStream_t stream, unsigned int maxBlocks, unsigned int maxThreads);

/// Entries of the scratch memory of a call for `lineCount` lines of `length` pixels: each block has a line with its
/// margins. An entry is a pixel of src and an offset of 8 bytes.
inline std::uint64_t convolution1dEntries(std::uint64_t lineCount, std::uint64_t length, std::uint64_t tapCount,
                                          unsigned int maxBlocks) {
    return std::min(static_cast<unsigned int>(lineCount), maxBlocks) * (length + tapCount - 1);
}

}  // namespace zel::cuda
