#include "zel/algorithms/Morphology2d.h"

#include "AdaptedImages.h"
#include "Validation.h"

namespace zel::cuda {

MorphologyAlgorithm2d::MorphologyAlgorithm2d() = default;
MorphologyAlgorithm2d::~MorphologyAlgorithm2d() = default;

void MorphologyAlgorithm2d::validate() const {
    using namespace validation;
    requireFilterImages2d(inputImage, outputImage, codesOf(InstanceTypes{}, TypesAsFloat{}));
    requireAllowed(kernelRadius);
    requireTile(tilingMode, tileSize);
}

std::unique_ptr<AdaptedImages> MorphologyAlgorithm2d::adaptImages() {
    return adaptImagesOf(TypesAsFloat{}, inputImage, outputImage);
}

CudaErosion2d::CudaErosion2d() = default;
CudaErosion2d::~CudaErosion2d() = default;

AlgoInfo* CudaErosion2d::getClassInfo() {
    static AlgoInfo info("CudaErosion2d");
    return &info;
}

CudaDilation2d::CudaDilation2d() = default;
CudaDilation2d::~CudaDilation2d() = default;

AlgoInfo* CudaDilation2d::getClassInfo() {
    static AlgoInfo info("CudaDilation2d");
    return &info;
}

CudaOpening2d::CudaOpening2d() = default;
CudaOpening2d::~CudaOpening2d() = default;

AlgoInfo* CudaOpening2d::getClassInfo() {
    static AlgoInfo info("CudaOpening2d");
    return &info;
}

CudaClosing2d::CudaClosing2d() = default;
CudaClosing2d::~CudaClosing2d() = default;

AlgoInfo* CudaClosing2d::getClassInfo() {
    static AlgoInfo info("CudaClosing2d");
    return &info;
}

}  // namespace zel::cuda
