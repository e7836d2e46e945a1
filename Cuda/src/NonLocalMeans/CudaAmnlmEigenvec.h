#pragma once

#include <cstdint>

#include "NonLocalMeans/CudaAmnlmData.h"
#include "NonLocalMeans/DeviceVector.h"

namespace amnlm {

/// The direction along which the voxels of a cluster differ most: steps of power iteration on their scatter matrix,
/// from a random start. Without any difference it is NaN.
/// @param difference          extents (Z, Y, X, K).
/// @param cluster             one entry a voxel.
/// @param manifoldIterations  steps.
/// @param direction           K elements, of length 1 together.
void computeDominantDirection(const RkCUDAAMNLMData& difference, const DeviceVector<bool>& cluster,
                              std::int32_t manifoldIterations, DeviceVector<float>& direction);

}  // namespace amnlm
