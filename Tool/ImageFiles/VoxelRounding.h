#pragma once

#include "ImageFiles/Common/Progress.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Copies an image into another voxel type, rounding to the nearest value of the type, ties to even. In integer types,
/// values beyond the range become its bounds and NaN becomes 0. Real numbers become complex ones with the imaginary
/// part 0.
/// @throws std::runtime_error for complex to real, which has no nearest value.
HostImage convertVoxels(const ImageModel& image, VoxelTypes type, const Progress& progress = {});

}  // namespace zel::tool
