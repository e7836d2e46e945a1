#include "BlockSearch_CUDA.h"

#include <cuda_runtime.h>

#include "CudaUtils_CUDA.h"
#include "Helper/raise.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "Utilities_CUDA/StatusChecks_CUDA.h"

namespace amnlm {

namespace {

constexpr std::uint64_t smallDeviceMib = 2000;
constexpr std::uint64_t smallDeviceBudgetMib = 1500;
constexpr float shareOfFreeMemory = 0.9f;

std::uint64_t mebibytes(std::uint64_t bytes) {
    return bytes >> 20;
}

std::int32_t& longestSide(Extents3& block) {
    auto& [x, y, z] = block;
    if (x > y) return x > z ? x : z;
    return y > z ? y : z;
}

}  // namespace

std::uint64_t estimatePeakDeviceMemory(const Extents3& block, float rangeSigma, float spatialSigma) {
    MemoryLedger ledger;
    ManifoldMemory(ledger, block, rangeSigma, spatialSigma).run();
    return ledger.peak();
}

std::uint64_t memoryBudget(const zel::CudaContext* context) {
    using zel::cuda::checkCudaStatus;
    int device = 0;
    if (context != nullptr && context->deviceId >= 0 && context->deviceId < zel::cuda::getDeviceCount())
        device = context->deviceId;
    else
        checkCudaStatus(cudaGetDevice(&device));
    cudaDeviceProp properties{};
    checkCudaStatus(cudaGetDeviceProperties(&properties, device));
    const std::uint64_t freeMib = mebibytes(getFreeDeviceMemory());
    if (mebibytes(properties.totalGlobalMem) <= smallDeviceMib) return std::min(freeMib, smallDeviceBudgetMib);
    return static_cast<std::uint64_t>(shareOfFreeMemory * static_cast<float>(freeMib));
}

Extents3 findBlockExtents(const Extents3& image, std::uint64_t budget, std::int32_t patchVoxels, float rangeSigma,
                          float spatialSigma) {
    const std::uint64_t patchBytes = sizeof(float) * static_cast<std::uint64_t>(patchVoxels);
    Extents3 block = image;
    while (mebibytes(estimatePeakDeviceMemory(block, rangeSigma, spatialSigma) + patchBytes) > budget)
        --longestSide(block);
    return block;
}

Extents3 coreSteps(const Extents3& block, const Extents3& image, std::int32_t overlap) {
    Extents3 steps = block;
    for (std::size_t axis = 0; axis < steps.size(); ++axis) {
        if (block[axis] < image[axis]) steps[axis] -= overlap;
        if (steps[axis] < 1)
            zel::raise<zel::UnexpectedError>("Cuda/src/NonLocalMeans/CudaAdaptiveManifoldNlmFilter", __LINE__,
                                             "Error, negative iteration block size.");
    }
    return steps;
}

}  // namespace amnlm
