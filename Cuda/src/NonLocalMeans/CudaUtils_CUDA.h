#pragma once

#include <cuda_runtime.h>

#include <cstddef>

namespace amnlm {

/// For the non-local means filter: a failed status resets the current device, which destroys all that is on it, and
/// raises RuntimeError.
void checkCudaFatal(cudaError_t status);

/// Free bytes of the current device. A failure resets the device.
std::size_t getFreeDeviceMemory();

}  // namespace amnlm
