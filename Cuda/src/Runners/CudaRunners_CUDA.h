#pragma once

#include "CudaRunnable_CUDA.h"
#include "Helper/safe_cast.h"
#include "zel/algorithms.h"

namespace zel::cuda {

// Each algorithm is carried out by an overload of its own, in the folder of its family, and has a runner.
void runOnGpu(CudaAdaptiveManifoldNlmFilter* algorithm);
void runOnGpu(CudaCrossCorrelation2d* algorithm);
void runOnGpu(CudaTemplateMatching3d* algorithm);
void runOnGpu(CudaBoxFilter2d* algorithm);
void runOnGpu(CudaGaussianFilter3d* algorithm);
void runOnGpu(CudaMedianFilter2d* algorithm);
void runOnGpu(CudaClosing2d* algorithm);
void runOnGpu(CudaDilation2d* algorithm);
void runOnGpu(CudaErosion2d* algorithm);
void runOnGpu(CudaOpening2d* algorithm);

/// Turns an algorithm object into a run on a GPU.
template <typename Algo>
class CudaRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override { runOnGpu(safe_cast<Algo*>(algorithm)); }
};

using CudaNonLocalMeansRunner = CudaRunner<CudaAdaptiveManifoldNlmFilter>;
using CudaCrossCorrelation2dRunner = CudaRunner<CudaCrossCorrelation2d>;
using CudaTemplateMatching3dRunner = CudaRunner<CudaTemplateMatching3d>;
using CudaBoxFilter2dRunner = CudaRunner<CudaBoxFilter2d>;
using CudaGaussianFilter3dRunner = CudaRunner<CudaGaussianFilter3d>;
using CudaMedianFilter2dRunner = CudaRunner<CudaMedianFilter2d>;
using CudaClosing2dRunner = CudaRunner<CudaClosing2d>;
using CudaDilation2dRunner = CudaRunner<CudaDilation2d>;
using CudaErosion2dRunner = CudaRunner<CudaErosion2d>;
using CudaOpening2dRunner = CudaRunner<CudaOpening2d>;

}  // namespace zel::cuda
