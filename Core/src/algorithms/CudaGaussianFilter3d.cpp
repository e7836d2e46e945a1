#include "zel/algorithms/CudaGaussianFilter3d.h"

#include <cmath>
#include <cstdint>

#include "Helper/raise.h"
#include "Validation.h"

namespace zel::cuda {

CudaGaussianFilter3d::CudaGaussianFilter3d() = default;
CudaGaussianFilter3d::~CudaGaussianFilter3d() = default;

AlgoInfo* CudaGaussianFilter3d::getClassInfo() {
    static AlgoInfo info("CudaGaussianFilter3d");
    return &info;
}

namespace {

/// Beyond it a float, in which the taps are summed, can no longer count them.
constexpr std::uint64_t maximalTapCount = 16777215;

void requireSigma(const char* name, double sigma, double kernelSizeFactor) {
    validation::requireNotNegative(name, sigma);
    const double tapCount = std::ceil(2 * kernelSizeFactor * sigma);
    if (tapCount <= static_cast<double>(maximalTapCount)) return;
    raise<RuntimeError>("Core/src/algorithms/CudaGaussianFilter3d", __LINE__, name, " is ", sigma,
                        "; with kernelSizeFactor ", kernelSizeFactor, " the kernel has ", tapCount,
                        " coefficients, and at most ", maximalTapCount, " are allowed");
}

}  // namespace

void CudaGaussianFilter3d::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(outputImage);
    requirePositive(kernelSizeFactor.name(), kernelSizeFactor.get());
    requireSigma("standardDeviation.x", standardDeviation.get().x, kernelSizeFactor);
    requireSigma("standardDeviation.y", standardDeviation.get().y, kernelSizeFactor);
    requireSigma("standardDeviation.z", standardDeviation.get().z, kernelSizeFactor);
    requireTile(tilingMode, tileSize);
    requireType(inputImage, kernelLibraryTypes);
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
