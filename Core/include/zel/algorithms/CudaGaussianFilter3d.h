#pragma once

#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// Gaussian smoothing of a 3D image, by one 1D convolution along each axis. The image is mirrored at its edges; the
/// edge voxel is repeated. Sums are float32; an integer output truncates them toward zero.
class ZEL_API CudaGaussianFilter3d final : public RunnerAlgorithm {
public:
    CudaGaussianFilter3d();
    ~CudaGaussianFilter3d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    /// Beyond it a float, in which the coefficients are summed, can no longer count them.
    static constexpr std::uint64_t maxTapCount = 16777215;

    PropertyReadImage inputImage{"inputImage"};
    /// 0 leaves an axis alone.
    Property<Vector3<double>> standardDeviation{"standardDeviation", {1, 1, 1}, {.low = 0, .unit = "voxels"}};
    /// Half the kernel size per standard deviation: a kernel has 2 * factor * deviation coefficients, rounded
    /// up to an odd number of at most maxTapCount.
    Property<double> kernelSizeFactor{"kernelSizeFactor", 3, {.low = 0, .excludesLow = true}};
    /// Without it an output other than float32 gets there by way of a float32 image. With it the passes work in the
    /// output itself: takes less memory, but truncates integers between the axes too.
    Property<bool> voxelTypeIntermediate{"voxelTypeIntermediate", false};
    Property<int> tilingMode{"tilingMode", 0};  ///< 1 cuts the image into tiles of tileSize
    Property<Vector3<unsigned>> tileSize{"tileSize", {256, 256, 256}, tileLength};
    Property<CudaContext*> cudaContext{"cudaContext"};  ///< deviceId beside a stream: that of a GPU
    PropertyWriteImage outputImage{"outputImage"};      ///< size of the input, its type or float32; not the same memory

protected:
    void validate() const override;
};

}  // namespace zel::cuda
