#pragma once

#include <cstdint>

#include "NonLocalMeans/CudaAmnlmData.h"

namespace amnlm {

/// The leading principal directions of a sample of patches: a block power iteration on their covariance, the directions
/// made orthonormal by Gram-Schmidt in each iteration. The first element of each direction is not negative.
/// @param eigenvectors    extents (1, dimensions, P, 1), P voxels a patch. Filled also when the result is false.
/// @param patches         extents (w, w, w, N).
/// @param iterationLimit  the largest number of iterations.
/// @return whether the directions still moved by less than 0.001 (squared, together) in one of the iterations.
bool computePcaEigenvectors(RkCUDAAMNLMData& eigenvectors, const RkCUDAAMNLMData& patches, std::int32_t dimensions,
                            std::int32_t iterationLimit);

/// Device memory that this holds besides its arguments, in bytes: two matrices of P by P.
inline std::uint64_t pcaBytes(std::int32_t patchVoxels) {
    const auto p = static_cast<std::uint64_t>(patchVoxels);
    return 2 * p * p * sizeof(float);
}

/// Projects the patch of each voxel of a block, weighted as the sampled ones are, on the directions.
/// @param block       extents (Z, Y, X, 1), scaled to 0 ... 1. Beyond its edges it goes on at the opposite side.
/// @param minimum, maximum, mean  of the image, not scaled.
/// @param patchImage  extents (Z, Y, X, D), D directions, 1 to 4.
void projectPatches(const RkCUDAAMNLMData& block, const RkCUDAAMNLMData& eigenvectors, float minimum, float maximum,
                    float mean, unsigned patchRadius, RkCUDAAMNLMData& patchImage);

}  // namespace amnlm
