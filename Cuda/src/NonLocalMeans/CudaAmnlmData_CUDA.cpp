#include <cuda_runtime.h>

#include <algorithm>

#include "CudaUtils_CUDA.h"
#include "NonLocalMeans/CudaAmnlmData.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace amnlm {

RkCUDAAMNLMData::RkCUDAAMNLMData(std::int32_t d0, std::int32_t d1, std::int32_t d2, std::int32_t d3)
    : dims{d0, d1, d2, d3} {
    void* memory = nullptr;
    checkCudaFatal(cudaMalloc(&memory, byteSize()));
    data = static_cast<float*>(memory);
}

RkCUDAAMNLMData::~RkCUDAAMNLMData() {
    std::fill(std::begin(dims), std::end(dims), 0);
    zel::cuda::ignoreCudaStatus(cudaFree(data));
}

std::uint64_t RkCUDAAMNLMData::elementCount() const {
    std::uint64_t count = 1;
    for (const std::int32_t extent : dims) count *= static_cast<std::uint64_t>(extent);
    return count;
}

void RkCUDAAMNLMData::upload(const std::vector<float>& host) {
    checkCudaFatal(cudaMemcpy(data, host.data(), byteSize(), cudaMemcpyHostToDevice));
}

void RkCUDAAMNLMData::download(std::vector<float>& host) const {
    checkCudaFatal(cudaMemcpy(host.data(), data, byteSize(), cudaMemcpyDeviceToHost));
}

}  // namespace amnlm
