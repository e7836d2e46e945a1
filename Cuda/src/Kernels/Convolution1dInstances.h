#pragma once

#include "CudaConvolution1d.h"
#include "zel/VoxelTypes.h"

/// Instances of a convolution launcher: for each pixel type in to itself, to float and from float.
#define ZEL_INSTANCE(LAUNCHER, IN, OUT)                                                                                \
    template void LAUNCHER(const IN*, std::uint64_t, std::uint64_t, OUT*, std::uint64_t, std::uint64_t, std::uint64_t, \
                           std::uint64_t, std::uint64_t, const float*, std::uint64_t, cudaStream_t, unsigned int,      \
                           unsigned int);
#define ZEL_INSTANCES_WITH_FLOAT(LAUNCHER, T) \
    ZEL_INSTANCE(LAUNCHER, T, T)              \
    ZEL_INSTANCE(LAUNCHER, T, float)          \
    ZEL_INSTANCE(LAUNCHER, float, T)
