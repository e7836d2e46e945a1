#include "zel/algorithms/CudaMedianFilter2d.h"

#include "AdaptedImages.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaMedianFilter2d)

void CudaMedianFilter2d::validate() const {
    using namespace validation;
    requireFilterImages2d(inputImage, outputImage, codesOf(InstanceTypes{}, TypesAsFloat{}));
    requireAllowed(kernelRadius);
    requireTile(tilingMode, tileSize);
}

std::unique_ptr<AdaptedImages> CudaMedianFilter2d::adaptImages() {
    return adaptImagesOf(TypesAsFloat{}, inputImage, outputImage);
}

}  // namespace zel::cuda
