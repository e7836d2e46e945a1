#pragma once

#include <cuda_runtime.h>

#include <source_location>

/// What the words of a GPU are made of, for threads of a block that are fibers on the CPU.
namespace zel::cuda {

/// By its place in the source two barriers are told apart.
inline void blockBarrier(std::source_location place = std::source_location::current()) {
    host::waitForBlock(place);
}

inline void* blockSharedMemory() {
    return host::blockSharedMemory;
}

}  // namespace zel::cuda
