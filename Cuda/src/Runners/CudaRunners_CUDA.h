#pragma once

#include "CudaRunnable_CUDA.h"
#include "Helper/safe_cast.h"
#include "zel/algorithms.h"

namespace zel::cuda {

// Each algorithm is carried out by an overload of its own, in the folder of its family, and has a runner. With a plan
// it fills that in, and does nothing else.
void runOnGpu(CudaAdaptiveManifoldNlmFilter* algorithm, RunPlan* plan);
void runOnGpu(CudaCrossCorrelation2d* algorithm, RunPlan* plan);
void runOnGpu(CudaTemplateMatching3d* algorithm, RunPlan* plan);
void runOnGpu(CudaBoxFilter2d* algorithm, RunPlan* plan);
void runOnGpu(CudaGaussianFilter3d* algorithm, RunPlan* plan);
void runOnGpu(CudaMedianFilter2d* algorithm, RunPlan* plan);
void runOnGpu(CudaClosing2d* algorithm, RunPlan* plan);
void runOnGpu(CudaDilation2d* algorithm, RunPlan* plan);
void runOnGpu(CudaErosion2d* algorithm, RunPlan* plan);
void runOnGpu(CudaOpening2d* algorithm, RunPlan* plan);

/// Runs an implementation, or tells its plan where there is one to fill in.
template <typename Implementation>
void runOrPlan(Implementation&& implementation, RunPlan* plan) {
    if (plan == nullptr) {
        implementation.run();
    } else {
        *plan = implementation.plan();
    }
}

/// Turns an algorithm object into a run on a GPU.
template <typename Algo>
class CudaRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override { runOnGpu(safe_cast<Algo*>(algorithm), nullptr); }
};

/// The plan of such a run.
template <typename Algo>
RunPlan planOnGpu(BaseAlgorithm* algorithm) {
    RunPlan plan;
    runOnGpu(safe_cast<Algo*>(algorithm), &plan);
    return plan;
}

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
