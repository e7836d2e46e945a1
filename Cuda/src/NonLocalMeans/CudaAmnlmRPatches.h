#pragma once

#include <cstdint>
#include <vector>

#include "NonLocalMeans/CudaAmnlmData.h"
#include "zel/ImageModel.h"

namespace amnlm {

/// Weights of the (2 radius + 1)^3 voxels of a patch by their distance from its middle, x fastest:
/// exp(-0.5 distance^2 / (0.5 radius)). A radius of 0 gives NaN.
std::vector<float> patchWeights(unsigned patchRadius);

/// Draws voxels of the whole image and fills row n of `patches` with the patch around the n-th: the voxels of a cube,
/// scaled as `minimum` and `maximum` go to 0 and 1, less the scaled mean, times their weights. Beyond the image's edges
/// a patch goes on at the opposite side. All positions are drawn before any voxel is read.
/// @param patches  extents (w, w, w, sampleCount), w = 2 patchRadius + 1.
/// @throws RuntimeError when voxels cannot be read, naming the first of them in the image.
void sampleRandomPatches(RkCUDAAMNLMData& patches, const zel::ImageModel* image, float minimum, float maximum,
                         float mean, unsigned patchRadius, std::int64_t sampleCount);

}  // namespace amnlm
