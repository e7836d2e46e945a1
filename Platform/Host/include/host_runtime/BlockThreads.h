#pragma once

#include <source_location>

#include "Types.h"
#include "export.h"

// What a kernel sees where each thread of a block is a fiber (option ZEL_HOST_BLOCK_THREADS).

extern constinit thread_local ZEL_HOST_API __attribute__((tls_model("initial-exec"))) uint3 threadIdx;

namespace zel::host {

/// Returns when all threads of the block have come to this barrier. Ends the process with a message when one has come
/// to another barrier, or ended.
ZEL_HOST_API void waitForBlock(std::source_location place);

}  // namespace zel::host

inline void __syncthreads(std::source_location place = std::source_location::current()) {
    zel::host::waitForBlock(place);
}
