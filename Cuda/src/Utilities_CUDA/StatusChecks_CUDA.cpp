#include "StatusChecks_CUDA.h"

#include "Helper/raise.h"
#include "SourceName_CUDA.h"
#include "StatusTexts_CUDA.h"

namespace zel::cuda {

void checkCudaStatus(cudaError_t status) {
    if (status == cudaSuccess) return;
    const cudaError_t pending = cudaGetLastError();
    if (pending == status) raise<RuntimeError>(utilitiesSource, __LINE__, cudaGetErrorString(status));
    raise<RuntimeError>(utilitiesSource, __LINE__, cudaGetErrorString(status), " ; ", cudaGetErrorString(pending));
}

void checkNppStatus(NppStatus status) {
    if (status != NPP_NO_ERROR) raise<RuntimeError>(utilitiesSource, __LINE__, nppStatusText(status));
}

void checkCufftStatus(cufftResult status) {
    if (status != CUFFT_SUCCESS) raise<RuntimeError>(utilitiesSource, __LINE__, cufftStatusText(status));
}

}  // namespace zel::cuda
