#pragma once

#include <cstddef>

#include "tarnway/Vector.h"
#include "tarnway/export.h"

namespace tarnway {

/// Where the elements of a view lie, in bytes from its first one.
class TARNWAY_API Indexer {
public:
    /// @param byteStride  from one index to the next along each dimension of the view.
    explicit Indexer(const VectorX<std::size_t>& byteStride) : byteStride_(byteStride) {}

    /// Entry 0 is the size of an element, entry 1 the distance between rows.
    const VectorX<std::size_t>& byteStride() const { return byteStride_; }
    std::size_t byteOffset(const VectorX<std::size_t>& index) const;

private:
    VectorX<std::size_t> byteStride_;
};

}  // namespace tarnway
