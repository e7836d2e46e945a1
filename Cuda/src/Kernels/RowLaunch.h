#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace zel::cuda {

/// Threads of a block in all row kernels.
inline constexpr unsigned rowBlockSize = 64;

/// The one launch of the row kernels: a block per row, a launch per slice, and a look at the status after each. A depth
/// of 0 launches nothing.
/// @param launchSlice  called with the configuration and the index of the slice.
/// @throws RuntimeError when a launch is refused; slices launched before stay launched.
template <typename LaunchSlice>
void launchRowsPerSlice(std::uint64_t height, std::uint64_t depth, cudaStream_t stream,
                        const LaunchSlice& launchSlice) {
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(static_cast<unsigned>(height), 1, 1);
    config.blockDim = dim3(rowBlockSize, 1, 1);
    config.stream = stream;
    for (std::uint64_t z = 0; z < depth; ++z) {
        launchSlice(config, z);
        checkCudaStatus(cudaGetLastError());
    }
}

}  // namespace zel::cuda
