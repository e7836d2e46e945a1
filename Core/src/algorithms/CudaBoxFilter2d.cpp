#include "zel/algorithms/CudaBoxFilter2d.h"

#include "AdaptedImages.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaBoxFilter2d)

void CudaBoxFilter2d::validate() const {
    using namespace validation;
    requireFilterImages2d(inputImage, outputImage, codesOf(InstanceTypes{}, TypesAsFloat{}));
    requireAllowed(kernelSizeX);
    requireAllowed(kernelSizeY);
    requireTile(tilingMode, tileSize);
}

std::unique_ptr<AdaptedImages> CudaBoxFilter2d::adaptImages() {
    return adaptImagesOf(TypesAsFloat{}, inputImage, outputImage);
}

}  // namespace zel::cuda
