#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

#include "Helper/manifoldTreeHeight.h"
#include "Helper/raise.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaAdaptiveManifoldNlmFilter)

float CudaAdaptiveManifoldNlmFilter::treeHeight() const {
    return manifoldTreeHeight(static_cast<float>(rangeSigma.get()), static_cast<float>(spatialSigma.get()));
}

void CudaAdaptiveManifoldNlmFilter::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(outputImage);
    requireAllowedAsFloat(spatialSigma);
    requireAllowedAsFloat(rangeSigma);
    const float height = treeHeight();
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
