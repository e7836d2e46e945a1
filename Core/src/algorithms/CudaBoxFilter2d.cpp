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
    requireFilterImages2d(
        inputImage, outputImage,
        {VoxelTypes::uint8, VoxelTypes::uint16, VoxelTypes::int16, VoxelTypes::float32, VoxelTypes::int8});
    requireRange(kernelSizeX, 1, maxLength);
    requireRange(kernelSizeY, 1, maxLength);
    requireTile(tilingMode, tileSize);
}

std::unique_ptr<AdaptedImages> CudaBoxFilter2d::adaptImages() {
    if (inputImage.get()->getDataType() != VoxelTypes::int8) return nullptr;
    return std::make_unique<AdaptedImages>(inputImage, outputImage);
}

}  // namespace zel::cuda
