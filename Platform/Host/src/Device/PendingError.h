#pragma once

#include <cuda_runtime.h>

namespace zel::host {

/// Makes a status other than cudaSuccess the calling thread's pending error; gives it back.
cudaError_t report(cudaError_t status);

/// Takes the calling thread's pending error away.
cudaError_t takePendingError();
cudaError_t pendingError();

}  // namespace zel::host
