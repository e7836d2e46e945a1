#include "CudaRunnable_CUDA.h"

#include "Utilities_CUDA/Gpu_CUDA.h"

namespace zel::cuda {

CudaRunnable::~CudaRunnable() = default;

bool CudaRunnable::isAvailable() {
    return getDeviceCount() > 0;
}

int CudaRunnable::runnerKind() {
    return 3;
}

}  // namespace zel::cuda
