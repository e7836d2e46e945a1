#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"
#include "brontal_zel_cuda.h"

using namespace zel::cuda;

void zelCudaInit() {
    allocateDeviceMemory(1);
}

bool zelIsCudaGpuAvailable() {
    return getDeviceCount() > 0;
}

CUstream_st* zelCudaAllocateCudaStream() {
    cudaStream_t stream = nullptr;
    checkCudaStatus(cudaStreamCreate(&stream));
    return stream;
}

void zelCudaDeleteCudaStream(CUstream_st* stream) {
    checkCudaStatus(cudaStreamDestroy(stream));
}
