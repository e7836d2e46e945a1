#include "zel/algorithms/CudaBoxFilter2d.h"

#include "AdaptedImages.h"
#include "Validation.h"

namespace zel::cuda {

CudaBoxFilter2d::CudaBoxFilter2d() = default;
CudaBoxFilter2d::~CudaBoxFilter2d() = default;

AlgoInfo* CudaBoxFilter2d::getClassInfo() {
    static AlgoInfo info("CudaBoxFilter2d");
    return &info;
}

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
