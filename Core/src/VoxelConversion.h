#pragma once

#include <cstddef>

#include "zel/VoxelTypes.h"

namespace zel {

/// Whether convertVoxels takes the pair: all real types among each other, a complex type only to itself.
bool isConvertible(VoxelTypes from, VoxelTypes to);

/// Converts `count` voxels as ImageModelAdapter's documentation says.
void convertVoxels(const void* source, VoxelTypes from, void* target, VoxelTypes to, std::size_t count);

}  // namespace zel
