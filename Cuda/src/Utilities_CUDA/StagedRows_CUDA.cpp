#include "StagedRows_CUDA.h"

#include "Helper/raise.h"
#include "SourceName_CUDA.h"

namespace zel::cuda {

namespace {

constexpr std::size_t smallestBuffer = 1048576;

[[noreturn]] void raiseRowFailure(const char* action, const ImageModel& image, std::size_t y,
                                  const StagedRows::Slice& slice) {
    raise<RuntimeError>(utilitiesSource, __LINE__, "Cannot ", action, " a row at the coordinates (0, ", y, ", ",
                        slice.z, ", ", slice.i3, ", ", slice.i4, ") in the image (", image.getDimension(0), ", ",
                        image.getDimension(1), ", ", image.getDimension(2), ", ", image.getDimension(3), ", ",
                        image.getDimension(4), ")");
}

}  // namespace

StagedRows::StagedRows(std::size_t rowBytes) : rowBytes_(rowBytes), buffer_(std::max(rowBytes, smallestBuffer)) {}

void StagedRows::readFrom(const ImageModel& image, const Chunk& chunk, const Slice& slice) {
    const std::size_t width = image.getDimension(0);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        const std::size_t y = chunk.firstRow + row;
        if (!image.readRow(width, buffer_.data() + row * rowBytes_, 0, y, slice.z, slice.i3, slice.i4)) {
            raiseRowFailure("read", image, y, slice);
        }
    }
}

void StagedRows::writeTo(ImageModel& image, const Chunk& chunk, const Slice& slice) const {
    const std::size_t width = image.getDimension(0);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        const std::size_t y = chunk.firstRow + row;
        if (!image.writeRow(width, buffer_.data() + row * rowBytes_, 0, y, slice.z, slice.i3, slice.i4)) {
            raiseRowFailure("write", image, y, slice);
        }
    }
}

}  // namespace zel::cuda
