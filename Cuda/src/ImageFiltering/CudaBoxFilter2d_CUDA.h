#pragma once

#include "Runners/CudaRunnable_CUDA.h"

namespace zel::cuda {

/// Runs CudaBoxFilter2d by NPP.
class CudaBoxFilter2dRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override;
};

}  // namespace zel::cuda
