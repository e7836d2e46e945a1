#pragma once

#include <cstdint>

#include "NonLocalMeans/CudaAmnlmData.h"

namespace amnlm {

/// Denoises a block by a tree of manifolds through the space of its patches (E. S. L. Gastal, M. M. Oliveira: Adaptive
/// manifolds for real-time high-dimensional filtering, ACM Transactions on Graphics 31 (4), 2012).
/// @param result      extents (Z, Y, X, 1); its content on entry does not matter.
/// @param block       extents (Z, Y, X, 1), scaled to 0 ... 1.
/// @param patchImage  extents (Z, Y, X, K): the point of each voxel in the space of patches.
/// @param manifoldIterations  steps towards each node's dominant direction.
/// @throws RuntimeError, after which the device is reset, or thrust::system::system_error or std::bad_alloc when the
/// device fails.
void adaptiveManifoldFilter(RkCUDAAMNLMData& result, const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& patchImage,
                            float rangeSigma, float spatialSigma, std::int32_t manifoldIterations);

}  // namespace amnlm
