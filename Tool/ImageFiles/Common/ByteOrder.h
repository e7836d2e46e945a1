#pragma once

#include <cstddef>

#include "zel/VoxelTypes.h"

namespace zel::tool {

/// Turns numbers that lie side by side into the other byte order; a complex number is two of them.
void swapBytes(void* numbers, std::size_t byteCount, VoxelTypes type);

}  // namespace zel::tool
