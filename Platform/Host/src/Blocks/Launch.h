#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <cstdint>

namespace zel::host {

struct Launch {
    dim3 grid;
    dim3 block;
    std::size_t sharedBytes;
    KernelCall kernel;

    std::uint64_t blocks() const { return std::uint64_t{grid.x} * grid.y * grid.z; }
    std::uint64_t threadsPerBlock() const { return std::uint64_t{block.x} * block.y * block.z; }

    /// Sets this thread's blockIdx and the other variables of a kernel for a block of the launch.
    void enter(std::uint64_t number) const {
        gridDim = grid;
        blockDim = block;
        const std::uint64_t row = number / grid.x;
        blockIdx = {static_cast<unsigned int>(number % grid.x), static_cast<unsigned int>(row % grid.y),
                    static_cast<unsigned int>(row / grid.y)};
    }
};

/// Runs all blocks. There are two forms, one of which is built: a block is run by one thread that does the work of all
/// its lanes (LaneBlocks.cpp), or by fibers which are its threads (ThreadBlocks.cpp).
void runBlocks(const Launch& launch);

}  // namespace zel::host
