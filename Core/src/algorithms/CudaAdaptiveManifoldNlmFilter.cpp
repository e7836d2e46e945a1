#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

#include <algorithm>
#include <cmath>

#include "Helper/raise.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaAdaptiveManifoldNlmFilter)

namespace {

constexpr float maxTreeHeight = 16;

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
    requireAllowedAsFloat(spatialSigma);
    requireAllowedAsFloat(rangeSigma);
    const float height = treeHeight(static_cast<float>(rangeSigma.get()), static_cast<float>(spatialSigma.get()));
    if (!(height <= maxTreeHeight)) {
        raise<RuntimeError>("Core/src/algorithms/CudaAdaptiveManifoldNlmFilter", __LINE__, spatialSigma.name(), " is ",
                            spatialSigma.get(), "; with rangeSigma ", rangeSigma.get(), " the tree of manifolds has ",
                            height, " levels, and at most ", maxTreeHeight, " are allowed");
    }
    requireAllowed(haloRadius);
    requireAllowed(patchRadius);
    requireType(inputImage, codesOf(InstanceTypes{}));
    requireSameSize(outputImage, inputImage);
    requireType(outputImage, codesOf(KernelTypes{}));
    requireDistinct(outputImage, inputImage);
}

}  // namespace zel::cuda
