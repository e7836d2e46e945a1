#include "zel/algorithms/CudaGaussianFilter3d.h"

#include <cmath>
#include <cstdint>

#include "Helper/raise.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaGaussianFilter3d)

namespace {

constexpr std::uint64_t maxTapCount = CudaGaussianFilter3d::maxTapCount;

/// @param length  of the image along the deviation's axis.
void requireTaps(const char* name, double sigma, double kernelSizeFactor, std::size_t length) {
    constexpr const char* thisFile = "Core/src/algorithms/CudaGaussianFilter3d";
    const double asked = std::ceil(2 * kernelSizeFactor * sigma);
    if (asked > static_cast<double>(maxTapCount)) {
        raise<RuntimeError>(thisFile, __LINE__, name, " is ", sigma, "; with kernelSizeFactor ", kernelSizeFactor,
                            " the kernel has ", asked, " coefficients, and at most ", maxTapCount, " are allowed");
    }
    const std::uint64_t tapCount = static_cast<std::uint64_t>(asked) | 1;
    if (length + tapCount - 1 > maxLength) {
        raise<RuntimeError>(thisFile, __LINE__, name, " is ", sigma, "; a line of ", length,
                            " voxels with the margins of a kernel of ", tapCount, " coefficients is longer than ",
                            maxLength);
    }
}

}  // namespace

void CudaGaussianFilter3d::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(outputImage);
    requireAllowed(standardDeviation);
    requireAllowed(kernelSizeFactor);
    requireTaps("standardDeviation.x", standardDeviation.get().x, kernelSizeFactor, inputImage.get()->getDimension(0));
    requireTaps("standardDeviation.y", standardDeviation.get().y, kernelSizeFactor, inputImage.get()->getDimension(1));
    requireTaps("standardDeviation.z", standardDeviation.get().z, kernelSizeFactor, inputImage.get()->getDimension(2));
    requireTile(tilingMode, tileSize);
    requireType(inputImage, codesOf(InstanceTypes{}));
    requireSameSize(outputImage, inputImage);
    const VoxelTypes type = inputImage.get()->getDataType();
    if (type == VoxelTypes::float32) {
        requireSameType(outputImage, inputImage);
    } else {
        requireType(outputImage, {type, VoxelTypes::float32});
    }
    requireDistinct(outputImage, inputImage);
}

}  // namespace zel::cuda
