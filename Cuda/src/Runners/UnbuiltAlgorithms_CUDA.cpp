// Algorithms that this build has no GPU implementation of say so when they are run.

#include "CudaRunners_CUDA.h"
#include "Helper/raise.h"

namespace zel::cuda {

namespace {

[[noreturn]] void raiseUnbuilt(const BaseAlgorithm& algorithm) {
    raise<RuntimeError>("Cuda/src/Runners/UnbuiltAlgorithms_CUDA", __LINE__, algorithm.classInfo()->className(),
                        " has no GPU implementation in this build");
}

}  // namespace

void runOnGpu(CudaCrossCorrelation2d* algorithm) {
    raiseUnbuilt(*algorithm);
}

}  // namespace zel::cuda
