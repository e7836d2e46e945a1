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
    requireFilterImages2d(
        inputImage, outputImage,
        {VoxelTypes::uint8, VoxelTypes::uint16, VoxelTypes::int16, VoxelTypes::float32, VoxelTypes::int8});
    requireRange(kernelRadius, 0, maxLength / 2);
    requireTile(tilingMode, tileSize);
}

std::unique_ptr<AdaptedImages> CudaMedianFilter2d::adaptImages() {
    if (inputImage.get()->getDataType() != VoxelTypes::int8) return nullptr;
    return std::make_unique<AdaptedImages>(inputImage, outputImage);
}

}  // namespace zel::cuda
