#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

#include <algorithm>
#include <cmath>

#include "Helper/raise.h"
#include "Validation.h"

namespace zel::cuda {

CudaAdaptiveManifoldNlmFilter::CudaAdaptiveManifoldNlmFilter() = default;
CudaAdaptiveManifoldNlmFilter::~CudaAdaptiveManifoldNlmFilter() = default;

AlgoInfo* CudaAdaptiveManifoldNlmFilter::getClassInfo() {
    static AlgoInfo info("CudaAdaptiveManifoldNlmFilter");
    return &info;
}

namespace {

constexpr float maximalTreeHeight = 16;

/// Height of the tree of manifolds: fewer levels for a wide range, more for a wide neighbourhood.
float treeHeight(float rangeSigma, float spatialSigma) {
    const float levels = std::ceil((1 - rangeSigma) * std::floor(std::log(spatialSigma) / std::log(2.0F) - 1));
    return std::max(2.0F, levels) + 2;
}

}  // namespace

void CudaAdaptiveManifoldNlmFilter::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(outputImage);
    requirePositiveFloat(spatialSigma.name(), spatialSigma.get());
    requirePositiveFloat(rangeSigma.name(), rangeSigma.get());
    const float height = treeHeight(static_cast<float>(rangeSigma.get()), static_cast<float>(spatialSigma.get()));
    if (!(height <= maximalTreeHeight)) {
        raise<RuntimeError>("Core/src/algorithms/CudaAdaptiveManifoldNlmFilter", __LINE__, spatialSigma.name(), " is ",
                            spatialSigma.get(), "; with rangeSigma ", rangeSigma.get(), " the tree of manifolds has ",
                            height, " levels, and at most ", maximalTreeHeight, " are allowed");
    }
    // Blocks overlap by 2 radius + 1 voxels, a signed 32-bit number.
    requireRange(haloRadius, 0, maxLength / 2);
    // The covariance of (2 radius + 1)^3 voxels is counted in 32 bits.
    requireRange(patchRadius, 0, 17);
    requireType(inputImage, kernelLibraryTypes);
    requireSameSize(outputImage, inputImage);
    requireType(outputImage, kernelLibraryTypes);
    requireDistinct(outputImage, inputImage);
}

}  // namespace zel::cuda
