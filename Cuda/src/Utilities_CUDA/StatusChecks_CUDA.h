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

/// For deleters: they run while unwinding, or after a reset that took the resource already. What fails there is
/// nobody's failure, and must not stay pending for the next check to find.
inline void ignoreCudaStatus(cudaError_t status) noexcept {
    if (status != cudaSuccess) cudaGetLastError();
}

}  // namespace zel::cuda
