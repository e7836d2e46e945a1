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

    PropertyReadImage inputImage{"inputImage"};        ///< any real type of up to 32 bits, or float64
    Property<double> spatialSigma{"spatialSigma", 5};  ///< voxels, above 0
    Property<double> rangeSigma{"rangeSigma", 0.2};    ///< of patches whose intensities are scaled to 0 to 1; above 0
    Property<unsigned> haloRadius{"haloRadius",
                                  10};  ///< voxels by which a block reaches beyond its core; at most 1073741823
    Property<unsigned> patchRadius{"patchRadius", 2};  ///< voxels; at most 17
    Property<CudaContext*> cudaContext{"cudaContext"};
    PropertyWriteImage outputImage{"outputImage"};  ///< size of the input; not the same memory

protected:
    void validate() const override;
};

}  // namespace zel::cuda
