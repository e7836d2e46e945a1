#pragma once

#include "CudaRunnable_CUDA.h"
#include "Helper/raise.h"
#include "Helper/safe_cast.h"
#include "zel/algorithms.h"

namespace zel::cuda {

/// Stands for an algorithm that this build has no GPU implementation of, and says so when it is run.
template <typename Algo>
class UnbuiltRunner : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) final {
        const auto* const own = safe_cast<Algo*>(algorithm);
        raise<RuntimeError>("Cuda/src/Runners/UnbuiltRunners_CUDA", __LINE__, own->classInfo()->className(),
                            " has no GPU implementation in this build");
    }
};

class CudaNonLocalMeansRunner final : public UnbuiltRunner<CudaAdaptiveManifoldNlmFilter> {};
class CudaCrossCorrelation2dRunner final : public UnbuiltRunner<CudaCrossCorrelation2d> {};
class CudaTemplateMatching3dRunner final : public UnbuiltRunner<CudaTemplateMatching3d> {};
class CudaMedianFilter2dRunner final : public UnbuiltRunner<CudaMedianFilter2d> {};

}  // namespace zel::cuda
