#pragma once

#include <cuda_runtime.h>

namespace amnlm {

/// For the non-local means filter: a failed status resets the current device, which destroys all that is on it, and
/// raises RuntimeError.
void checkCudaFatal(cudaError_t status);

}  // namespace amnlm
