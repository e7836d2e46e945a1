#pragma once

#include "Runners/CudaRunnable_CUDA.h"

namespace zel::cuda {

/// Runs CudaGaussianFilter3d as three passes of the one-dimensional convolution, along x, y and z.
class CudaGaussianFilter3dRunner final : public CudaRunnable {
public:
    void run(BaseAlgorithm* algorithm) override;
};

}  // namespace zel::cuda
