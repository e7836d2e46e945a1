#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>

#include "CudaConvolution1d.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"

namespace zel::cuda {

/// The launch of the 1D convolutions: a block for each of `lineCount` lines up to `maxBlocks`, with a scratch line and
/// a table of its own, and a thread for each of a line's `length` pixels up to `maxThreads`. The scratch memory goes
/// out of scope right behind the launch, since freeing device memory waits for the work that uses it.
/// @param images  the kernel's arguments before the taps.
template <typename TIn, typename Kernel, typename... Images>
void launchConvolution1d(Kernel kernel, std::uint64_t lineCount, std::uint64_t length, const float* taps,
                         std::uint64_t tapCount, cudaStream_t stream, unsigned int maxBlocks, unsigned int maxThreads,
                         Images... images) {
    const std::uint64_t lineLength = length + tapCount - 1;
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(std::min(static_cast<unsigned int>(lineCount), maxBlocks));
    config.blockDim = dim3(std::min(static_cast<unsigned int>(length), maxThreads));
    config.stream = stream;
    const std::uint64_t entries = convolution1dEntries(lineCount, length, tapCount, maxBlocks);
    const auto lines = allocateDeviceMemory(entries * sizeof(TIn));
    const auto offsets = allocateDeviceMemory(entries * sizeof(unsigned long long));
    cudaLaunchKernelEx(&config, kernel, images..., const_cast<float*>(taps), tapCount, static_cast<int>(tapCount / 2),
                       lineLength, static_cast<TIn*>(lines.get()), static_cast<unsigned long long*>(offsets.get()));
}

}  // namespace zel::cuda
