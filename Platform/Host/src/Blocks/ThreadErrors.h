#pragma once

#include <string>

#include "Blocks/BlockThread.h"
#include "Blocks/Launch.h"

namespace zel::host {

/// "(1, 0, 0)"
std::string text(uint3 index);
/// "kernel blurKernel<float>, block (1, 0, 0), "
std::string kernelBlockText(const void* kernel, uint3 block);
/// "kernel blurKernel<float>, block (1, 0, 0), thread (5, 0, 0), ZEL_HOST_THREAD_SEED=1: "
std::string kernelThreadText(const void* kernel, uint3 block, uint3 thread);

/// Ends the process with a message about the thread that runs now.
[[noreturn]] void endWithError(const std::string& what);
/// Ends it with a message about two threads of a block of which one waits at a barrier that the other has not come to.
[[noreturn]] void endWithBarrierError(const void* kernel, const BlockThread& waiting, const BlockThread& other);

/// Has a kernel's access to memory that does not exist end the process with a message. Called by each thread that runs
/// kernels.
void reportBadAddresses();

}  // namespace zel::host
