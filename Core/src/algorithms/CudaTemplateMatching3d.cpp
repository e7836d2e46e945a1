#include "zel/algorithms/CudaTemplateMatching3d.h"

#include "Helper/raise.h"
#include "Validation.h"

namespace zel::cuda {

CudaTemplateMatching3d::CudaTemplateMatching3d() = default;
CudaTemplateMatching3d::~CudaTemplateMatching3d() = default;

AlgoInfo* CudaTemplateMatching3d::getClassInfo() {
    static AlgoInfo info("CudaTemplateMatching3d");
    return &info;
}

namespace {

using validation::NamedImage;

void requireSameSpacing(const NamedImage& image, const NamedImage& reference) {
    for (int axis = 0; axis < 3; ++axis) {
        if (image.image->getSpacing(axis) == reference.image->getSpacing(axis)) continue;
        raise<RuntimeError>("Core/src/algorithms/CudaTemplateMatching3d", __LINE__, image.name, " has the spacing ",
                            image.image->getSpacing(axis), " along axis ", axis, "; it must have that of ",
                            reference.name, ", ", reference.image->getSpacing(axis));
    }
}

}  // namespace

void CudaTemplateMatching3d::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(inputTemplate);
    requireImage(outputScoreImage);
    requireImage(outputIndexImage);
    requireTile(tilingMode, tileSize);
    requireType(inputImage, kernelLibraryTypes);
    requireSameType(inputTemplate, inputImage);
    requireNotLarger(inputTemplate, inputImage);
    if (inputMask.get() != nullptr) {
        requireImage(inputMask);
        requireType(inputMask, kernelLibraryTypes);
        requireSameSize(inputMask, inputTemplate);
        requireSameSpacing(inputMask, inputTemplate);
    }
    if (frequencyFilter.get() != nullptr) {
        requireImage(frequencyFilter);
        requireType(frequencyFilter, kernelLibraryTypes);
    }
    requireSameSize(outputScoreImage, inputImage);
    requireType(outputScoreImage, {VoxelTypes::float32});
    requireSameSize(outputIndexImage, inputImage);
    requireType(outputIndexImage, {VoxelTypes::uint8, VoxelTypes::uint16, VoxelTypes::uint32});
    requireDistinct(outputScoreImage, inputImage);
    requireDistinct(outputIndexImage, inputImage);
    requireDistinct(outputScoreImage, inputTemplate);
    requireDistinct(outputIndexImage, inputTemplate);
    requireDistinct(outputIndexImage, outputScoreImage);
}

}  // namespace zel::cuda
