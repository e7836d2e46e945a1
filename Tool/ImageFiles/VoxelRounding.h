#pragma once

#include "zel/HostImage.h"

namespace zel::tool {

/// Copies an image into another voxel type, to the nearest value that the type has: ties go to the even neighbour,
/// values beyond the range of an integer type to its bounds, NaN to integer 0. Real numbers become complex ones with an
/// imaginary part of 0.
/// @throws std::runtime_error for complex to real, where no value is the nearest.
HostImage convertVoxels(const ImageModel& image, VoxelTypes type);

}  // namespace zel::tool
