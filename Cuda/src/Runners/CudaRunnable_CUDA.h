#pragma once

#include "zel/AlgoInfo.h"

namespace zel::cuda {

/// Base of the ten runners: each turns an algorithm object into a run on a GPU. Runners have no state.
class CudaRunnable : public Runnable {
public:
    ~CudaRunnable() override;
    void run(BaseAlgorithm* algorithm) override = 0;
    bool isAvailable() override;
    int runnerKind() override;
};

}  // namespace zel::cuda
