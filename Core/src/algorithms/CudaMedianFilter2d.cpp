#include "zel/algorithms/CudaMedianFilter2d.h"

#include "AdaptedImages.h"
#include "Validation.h"

namespace zel::cuda {

CudaMedianFilter2d::CudaMedianFilter2d() = default;
CudaMedianFilter2d::~CudaMedianFilter2d() = default;

AlgoInfo* CudaMedianFilter2d::getClassInfo() {
    static AlgoInfo info("CudaMedianFilter2d");
    return &info;
}

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
