#include "ImageFiles/Common/ByteOrder.h"

#include <algorithm>

namespace zel::tool {

void swapBytes(void* numbers, std::size_t byteCount, VoxelTypes type) {
    const std::size_t numberSize = helper::getSizeOf(type) / (isComplex(type) ? 2 : 1);
    auto* const bytes = static_cast<std::byte*>(numbers);
    for (std::size_t i = 0; i < byteCount; i += numberSize) std::reverse(bytes + i, bytes + i + numberSize);
}

}  // namespace zel::tool
