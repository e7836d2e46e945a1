#pragma once

#include "NonLocalMeans/CudaAmnlmData.h"

namespace amnlm {

/// Low-pass filter: first-order recursive sweeps forward and back along x, then y, then z, channel by channel, nothing
/// being assumed beyond the ends. Along x the forward sweep blends each value with its unfiltered neighbour instead of
/// the filtered one, so x is smoothed less than y and z. A line of one voxel stays unchanged along it.
///
/// @param in     (Z, Y, X, C), none of them 0.
/// @param sigma  width in voxels, above 0; the feedback of a step is exp(-sqrt(2) / sigma).
/// @param out    of the extents of `in`, another object. The kernels are not waited for.
/// @throws RuntimeError  when the copy fails; the device is reset.
void hFilter(const RkCUDAAMNLMData& in, float sigma, RkCUDAAMNLMData& out);

}  // namespace amnlm
