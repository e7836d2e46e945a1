#pragma once

#include "NonLocalMeans/CudaAmnlmData.h"

namespace amnlm {

/// Edge-aware low-pass filter: one recursive sweep forward and back along x, then y, then z, all channels alike. A step
/// between two voxels counts as sqrt(1 + (spatialSigma / rangeSigma)^2 * d^2) voxels, d being the distance of their
/// values in `joint`, so that the blur follows that image and stops at its edges (the domain transform of Gastal and
/// Oliveira, "Domain transform for edge-aware image and video processing", 2011, in its recursive form).
///
/// @param data          (Z, Y, X, C), none of them 0.
/// @param joint         (Z, Y, X, K): the same voxels, with channels of their own.
/// @param rangeSigma    in units of `joint`, above 0.
/// @param spatialSigma  in voxels, above 0; the feedback of a step of length 1 is exp(-sqrt(2) / spatialSigma).
/// @param out           of the extents of `data`, another object. The kernels are not waited for, but for the release
///                      of the scratch memory: a float for each voxel.
/// @throws RuntimeError  when the copy fails; the device is reset.
/// @throws thrust::system::system_error, thrust::system::detail::bad_alloc  when there is no scratch memory.
void rfFilter(const RkCUDAAMNLMData& data, const RkCUDAAMNLMData& joint, float rangeSigma, float spatialSigma,
              RkCUDAAMNLMData& out);
/// The same for data that nobody needs any more: it exchanges its memory with `out` instead of being copied.
void rfFilter(RkCUDAAMNLMData&& data, const RkCUDAAMNLMData& joint, float rangeSigma, float spatialSigma,
              RkCUDAAMNLMData& out);

}  // namespace amnlm
