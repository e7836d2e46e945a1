#include "CudaUtils_CUDA.h"

#include "Helper/raise.h"

namespace amnlm {

void checkCudaFatal(cudaError_t status) {
    if (status == cudaSuccess) return;
    cudaDeviceReset();
    zel::raise<zel::RuntimeError>("Cuda/src/NonLocalMeans/CudaUtils_CUDA", __LINE__,
                                  "Fatal Cuda error: ", cudaGetErrorString(status), "\n");
}

std::size_t getFreeDeviceMemory() {
    std::size_t free = 0;
    std::size_t total = 0;
    checkCudaFatal(cudaMemGetInfo(&free, &total));
    return free;
}

}  // namespace amnlm
