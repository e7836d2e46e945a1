#pragma once

#include <cstdint>

#include "ManifoldMemory_CUDA.h"
#include "zel/CudaContext.h"

namespace amnlm {

/// Peak device memory of adaptiveManifoldFilter() for a block of these extents, its arguments included, in bytes.
std::uint64_t estimatePeakDeviceMemory(const Extents3& block, float rangeSigma, float spatialSigma);

/// Device memory that a run may use, in MiB: on the current device the larger part of what is free, and never above
/// 1500 on a small device. Whether it is small is decided by the context's device, where there is one.
std::uint64_t memoryBudget(const zel::CudaContext* context);

/// The largest block whose filter stays within the budget: starting from the whole image, the longest side is
/// shortened until it fits.
/// @param budget       in MiB.
/// @param patchVoxels  voxels of a patch.
Extents3 findBlockExtents(const Extents3& image, std::uint64_t budget, std::int32_t patchVoxels, float rangeSigma,
                          float spatialSigma);

/// How far apart the cores of blocks lie. Along an axis that a block covers, its extent; else `overlap` less.
/// @throws UnexpectedError when the overlap leaves no core.
Extents3 coreSteps(const Extents3& block, const Extents3& image, std::int32_t overlap);

}  // namespace amnlm
