#pragma once

#include <cstddef>

#include "tarnway/ImageProperties.h"
#include "tarnway/Indexer.h"
#include "tarnway/Vector.h"
#include "tarnway/export.h"

namespace tarnway {

/// A look at an image that lies somewhere; the memory may be the view's own or somebody else's.
class TARNWAY_API ImageView {
public:
    virtual ~ImageView();

    virtual const ImageProperties& imageProperties() const = 0;
    /// Whether the elements lie in the memory of a GPU. A view that says so is a tarnway_cuda::CudaImageExtension too.
    virtual bool isOnDevice() const = 0;
    /// Where the elements lie, from storage() on.
    virtual const Indexer& indexer() const = 0;

    /// Copies `count` elements along x from the index on to `buffer` in host memory. False when they cannot be had.
    virtual bool readRow(std::size_t count, void* buffer, const VectorX<std::size_t>& index) const = 0;
    virtual bool writeRow(std::size_t count, const void* buffer, const VectorX<std::size_t>& index) = 0;

    /// Address of the first element, wherever it lies: two views of one image give the same.
    virtual const void* storage() const = 0;
};

}  // namespace tarnway
