#include "zel/algorithms/Morphology2d.h"

#include "AdaptedImages.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

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

ZEL_DEFINE_ALGORITHM(CudaErosion2d)
ZEL_DEFINE_ALGORITHM(CudaDilation2d)
ZEL_DEFINE_ALGORITHM(CudaOpening2d)
ZEL_DEFINE_ALGORITHM(CudaClosing2d)

}  // namespace zel::cuda
