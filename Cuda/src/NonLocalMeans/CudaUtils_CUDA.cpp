#include "CudaUtils_CUDA.h"

#include "Helper/raise.h"

namespace amnlm {

void checkCudaFatal(cudaError_t status) {
    if (status == cudaSuccess) return;
    cudaDeviceReset();
    zel::raise<zel::RuntimeError>("Cuda/src/NonLocalMeans/CudaUtils_CUDA", __LINE__,
                                  "Fatal Cuda error: ", cudaGetErrorString(status), "\n");
}

}  // namespace amnlm
