#pragma once

#include <cstddef>

#include "zel/VoxelTypes.h"

namespace zel {

/// Whether convertVoxels takes the pair: a real type to any, a complex type only to itself.
bool isConvertible(VoxelTypes from, VoxelTypes to);

/// Converts `count` voxels as ImageModelAdapter's documentation says.
void convertVoxels(const void* source, VoxelTypes from, void* target, VoxelTypes to, std::size_t count);

}  // namespace zel
