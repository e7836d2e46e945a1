#include "zel/algorithms/CudaCrossCorrelation2d.h"

#include "Validation.h"

namespace zel::cuda {

CudaCrossCorrelation2d::CudaCrossCorrelation2d() = default;
CudaCrossCorrelation2d::~CudaCrossCorrelation2d() = default;

AlgoInfo* CudaCrossCorrelation2d::getClassInfo() {
    static AlgoInfo info("CudaCrossCorrelation2d");
    return &info;
}

void CudaCrossCorrelation2d::validate() const {
    using namespace validation;
    requireImage2d(inputImage);
    requireImage2d(inputTemplate);
    requireImage2d(outputImage);
    requireTile(tilingMode, tileSize);
    requireType(inputImage, codesOf(InstanceTypes{}));
    requireSameType(inputTemplate, inputImage);
    requireNotLarger(inputTemplate, inputImage);
    requireSameSize(outputImage, inputImage);
    requireType(outputImage, {VoxelTypes::float32});
    requireDistinct(outputImage, inputImage);
    requireDistinct(outputImage, inputTemplate);
}

}  // namespace zel::cuda
