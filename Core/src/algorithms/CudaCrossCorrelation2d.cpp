#include "zel/algorithms/CudaCrossCorrelation2d.h"

#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaCrossCorrelation2d)

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
