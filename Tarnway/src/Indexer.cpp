#include "tarnway/Indexer.h"

namespace tarnway {

std::size_t Indexer::byteOffset(const VectorX<std::size_t>& index) const {
    std::size_t offset = 0;
    for (std::size_t i = 0; i < index.size(); ++i) offset += index[i] * byteStride_[i];
    return offset;
}

}  // namespace tarnway
