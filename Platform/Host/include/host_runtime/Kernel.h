#pragma once

#include <atomic>
#include <cmath>

#include "Types.h"
#include "export.h"

// What the text of a kernel uses.

#ifdef ZEL_HOST_BLOCK_THREADS
#include "BlockThreads.h"
#define __global__
#else
// Flattened, so that no lambda of a kernel stays a call which reloads its captures for every pixel.
#define __global__ __attribute__((flatten))
#endif
#define __device__
#define __host__
#define __forceinline__ inline __attribute__((always_inline))

// Kernels of any shared library read these, so they live once, in the host device's library. The initial-exec model
// makes a read two instructions; the default model would call a function for each.
#define ZEL_BLOCK_VARIABLE extern constinit thread_local ZEL_HOST_API __attribute__((tls_model("initial-exec")))
ZEL_BLOCK_VARIABLE uint3 blockIdx;
ZEL_BLOCK_VARIABLE dim3 blockDim;
ZEL_BLOCK_VARIABLE dim3 gridDim;
namespace zel::host {
/// The dynamic shared memory of the block that this thread runs, aligned to 64 bytes; null when the launch asked for
/// none.
ZEL_BLOCK_VARIABLE void* blockSharedMemory;

/// A block of independent pieces of work may be run in parts: `count` calls of the kernel, this one being `index`. A
/// word that keeps to its part says so by `taken`; a kernel without such words does all of its work in the first call.
struct BlockPart {
    unsigned int index, count;
    bool taken;
};
ZEL_BLOCK_VARIABLE BlockPart blockPart;
}  // namespace zel::host
#undef ZEL_BLOCK_VARIABLE

/// Adds 1 and wraps to 0 past the limit; returns the value before. The read-modify-write is acquire and release, so
/// that it orders what blocks publish with __threadfence(): a fence of its own would be unknown to ThreadSanitizer.
inline unsigned int atomicInc(unsigned int* address, unsigned int limit) {
    const std::atomic_ref<unsigned int> counter(*address);
    unsigned int old = counter.load(std::memory_order_relaxed);
    while (!counter.compare_exchange_weak(old, old >= limit ? 0 : old + 1, std::memory_order_acq_rel,
                                          std::memory_order_relaxed)) {
    }
    return old;
}

inline void __threadfence() {}
