#include "StagedRows_CUDA.h"

#include <new>

#include "RowFailure_CUDA.h"

namespace zel::cuda {

namespace {

constexpr std::size_t smallestBuffer = 1048576;

}  // namespace

// Zeroed by calloc, which leaves alone what a small image never touches.
StagedRows::StagedRows(std::size_t rowBytes)
    : rowBytes_(rowBytes),
      bufferBytes_(std::max(rowBytes, smallestBuffer)),
      buffer_(static_cast<std::byte*>(std::calloc(bufferBytes_, 1))) {
    if (buffer_ == nullptr) throw std::bad_alloc();
}

void StagedRows::readFrom(const ImageModel& image, const Chunk& chunk, const Slice& slice) {
    const std::size_t width = image.getDimension(0);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        const std::size_t y = chunk.firstRow + row;
        if (!image.readRow(width, buffer_.get() + row * rowBytes_, 0, y, slice.z, slice.i3, slice.i4)) {
            raiseRowFailure("read", image, {0, y, slice.z, slice.i3, slice.i4});
        }
    }
}

void StagedRows::writeTo(ImageModel& image, const Chunk& chunk, const Slice& slice) const {
    const std::size_t width = image.getDimension(0);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        const std::size_t y = chunk.firstRow + row;
        if (!image.writeRow(width, buffer_.get() + row * rowBytes_, 0, y, slice.z, slice.i3, slice.i4)) {
            raiseRowFailure("write", image, {0, y, slice.z, slice.i3, slice.i4});
        }
    }
}

}  // namespace zel::cuda
