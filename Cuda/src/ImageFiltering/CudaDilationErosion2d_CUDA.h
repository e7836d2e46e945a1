#pragma once

#include "Runners/CudaRunnable_CUDA.h"

namespace zel::cuda {

/// Runs CudaErosion2d by NPP.
class CudaErosion2dRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override;
};

/// Runs CudaDilation2d by NPP.
class CudaDilation2dRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override;
};

}  // namespace zel::cuda
