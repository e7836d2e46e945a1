#pragma once

#include <cuda_runtime.h>
#include <cufft.h>
#include <nppdefs.h>

namespace zel::cuda {

/// Each returns when the status is that of success, and otherwise raises RuntimeError in the library's words for it.

/// Also reads and clears the runtime's pending error, and names it when it is another one.
void checkCudaStatus(cudaError_t status);
/// NPP's warnings are failures too.
void checkNppStatus(NppStatus status);
void checkCufftStatus(cufftResult status);

}  // namespace zel::cuda
