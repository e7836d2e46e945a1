#pragma once

#include "Runners/CudaRunnable_CUDA.h"

namespace zel::cuda {

/// Runs CudaOpening2d by NPP.
class CudaOpening2dRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override;
};

/// Runs CudaClosing2d by NPP.
class CudaClosing2dRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override;
};

}  // namespace zel::cuda
