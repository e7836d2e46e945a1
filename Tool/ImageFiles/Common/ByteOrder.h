#pragma once

#include <cstddef>

#include "zel/VoxelTypes.h"

namespace zel::tool {

/// Reverses the byte order of adjacent numbers; a complex number counts as two.
void swapBytes(void* numbers, std::size_t byteCount, VoxelTypes type);

}  // namespace zel::tool
