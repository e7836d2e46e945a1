#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "RowLaunch.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"

namespace zel::cuda {

/// The launch of a reduction: a block for each row, in which each thread gathers an entry, then an entry for each
/// block, of which the last block to finish makes one. Waits for all work of the device.
///
/// @tparam Entry  a sum, or a record of what was gathered.
/// @param grid    blocks, one for each row; threads of a block at most rowBlockSize, and not more than `width`.
/// @param record  the neutral entry, and afterwards the result.
/// @param images  the kernel's arguments before the blocks' entries and the counter of finished blocks.
/// @throws RuntimeError when memory runs out or a call is refused; the record is then still neutral, or what a failed
///         copy left. No device memory is left.
template <typename Entry, typename Kernel, typename... Images>
void reduceRows(dim3 grid, std::uint64_t width, Entry* record, cudaStream_t stream, Kernel kernel, Images... images) {
    cudaLaunchConfig_t config{};
    config.gridDim = grid;
    config.blockDim = dim3(static_cast<unsigned int>(std::min<std::uint64_t>(width, rowBlockSize)), 1, 1);
    config.dynamicSmemBytes = config.blockDim.x * sizeof(Entry);
    config.stream = stream;

    const std::uint64_t blocks = std::uint64_t{grid.x} * grid.y;
    const auto entryMemory = allocateDeviceMemory(blocks * sizeof(Entry));
    auto* const entries = static_cast<Entry*>(entryMemory.get());
    if constexpr (std::is_arithmetic_v<Entry>) {
        checkCudaStatus(cudaMemsetAsync(entries, 0, blocks * sizeof(Entry), stream));
    } else {
        for (std::uint64_t block = 0; block < blocks; ++block)
            checkCudaStatus(cudaMemcpyAsync(entries + block, record, sizeof(Entry), cudaMemcpyHostToDevice, stream));
    }
    const auto counter = allocateDeviceMemory(sizeof(unsigned int));
    checkCudaStatus(cudaMemsetAsync(counter.get(), 0, sizeof(unsigned int), stream));
    checkCudaStatus(cudaDeviceSynchronize());

    cudaLaunchKernelEx(&config, kernel, images..., entries, static_cast<unsigned int*>(counter.get()));
    checkCudaStatus(cudaGetLastError());
    checkCudaStatus(cudaDeviceSynchronize());
    checkCudaStatus(cudaMemcpyAsync(record, entries, sizeof(Entry), cudaMemcpyDeviceToHost, stream));
    checkCudaStatus(cudaDeviceSynchronize());
}

}  // namespace zel::cuda
