#include "zel/algorithms/CudaGaussianFilter3d.h"

#include "Validation.h"

namespace zel::cuda {

CudaGaussianFilter3d::CudaGaussianFilter3d() = default;
CudaGaussianFilter3d::~CudaGaussianFilter3d() = default;

AlgoInfo* CudaGaussianFilter3d::getClassInfo() {
    static AlgoInfo info("CudaGaussianFilter3d");
    return &info;
}

void CudaGaussianFilter3d::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(outputImage);
    requireNotNegative("standardDeviation.x", standardDeviation.get().x);
    requireNotNegative("standardDeviation.y", standardDeviation.get().y);
    requireNotNegative("standardDeviation.z", standardDeviation.get().z);
    requirePositive(kernelSizeFactor.name(), kernelSizeFactor.get());
    requireTile(tilingMode, tileSize);
    requireType(inputImage, kernelLibraryTypes);
    requireSameSize(outputImage, inputImage);
    requireType(outputImage, {inputImage.get()->getDataType(), VoxelTypes::float32});
    requireDistinct(outputImage, inputImage);
}

}  // namespace zel::cuda
