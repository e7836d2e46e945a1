#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// A box average by FFT: dst(x, y) sums src times kernelValue over the window of kernelWidth by kernelHeight that
/// begins at (x - kernelWidth / 2, y - kernelHeight / 2), both rounded down, with src mirrored at its edges. Returns
/// when only the copy to dst is still queued.
///
/// @param src, dst   device memory of `height` rows of `width` pixels, float or double; pitches are bytes. They may
///                   be the same.
/// @param normalise  divides by the pixels of the window, so that a kernel value of 1 gives the mean.
/// @throws RuntimeError when memory for two padded images and their spectra cannot be had, or a call is refused.
template <typename R>
void computeLocalMean(const R* src, std::uint64_t srcPitch, std::uint64_t width, std::uint64_t height, R kernelValue,
                      std::uint64_t kernelWidth, std::uint64_t kernelHeight, bool normalise, R* dst,
                      std::uint64_t dstPitch, cudaStream_t stream);

/// Bytes of device memory that the call holds, for images of the working type R.
template <typename R>
std::uint64_t localMeanBytes(std::uint64_t width, std::uint64_t height, std::uint64_t kernelWidth,
                             std::uint64_t kernelHeight);

}  // namespace zel::cuda
