#pragma once

#include "zel/algorithms/RunnerAlgorithm.h"

namespace zel::cuda {

/// Non-local means denoising of a 2D or 3D image by adaptive manifolds.
///
/// E. S. L. Gastal, M. M. Oliveira: Adaptive manifolds for real-time high-dimensional filtering, ACM Transactions on
/// Graphics 31 (4), 2012.
class ZEL_API CudaAdaptiveManifoldNlmFilter final : public RunnerAlgorithm {
public:
    CudaAdaptiveManifoldNlmFilter();
    ~CudaAdaptiveManifoldNlmFilter() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    /// Levels of the tree of manifolds that the sigmas ask for: narrow ranges and wide spaces need more.
    float treeHeight() const;
    static constexpr float maxTreeHeight = 16;

    PropertyReadImage inputImage{"inputImage"};
    /// In 32 bits, as is rangeSigma.
    Property<double> spatialSigma{"spatialSigma", 2, {.low = 0, .excludesLow = true, .unit = "voxels"}};
    /// Of patches whose intensities are scaled to 0 to 1.
    Property<double> rangeSigma{"rangeSigma", 0.25, {.low = 0, .excludesLow = true}};
    /// By how much a block reaches beyond its core. Blocks overlap by 2 radius + 1, a signed 32-bit number.
    Property<unsigned> haloRadius{"haloRadius", 10, {.high = maxLength / 2, .unit = "voxels"}};
    /// The covariance of (2 radius + 1)^3 voxels is counted in 32 bits.
    Property<unsigned> patchRadius{"patchRadius", 2, {.high = 17, .unit = "voxels"}};
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputImage{"outputImage"};  ///< size of the input, any of its types; not the same memory

protected:
    void validate() const override;
};

}  // namespace zel::cuda
