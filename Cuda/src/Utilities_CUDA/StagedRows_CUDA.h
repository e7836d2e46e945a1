#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "zel/ImageModel.h"

namespace zel::cuda {

/// A host buffer through which the rows of an image without contiguous host data travel, in chunks of many rows, so
/// that such an image does not pay for one transfer per row.
class StagedRows {
public:
    /// Rows firstRow to firstRow + rows - 1 of a slice.
    struct Chunk {
        std::size_t firstRow;
        std::size_t rows;
    };
    /// What a row's position is made of beside its y.
    struct Slice {
        std::size_t z;
        std::size_t i3;
        std::size_t i4;
    };

    explicit StagedRows(std::size_t rowBytes);

    void* data() { return buffer_.get(); }

    template <typename Body>
    void forEachChunk(std::size_t height, const Body& body) const {
        if (rowBytes_ == 0) return;
        const std::size_t rowsPerChunk = bufferBytes_ / rowBytes_;
        for (std::size_t y = 0; y < height; y += rowsPerChunk) body(Chunk{y, std::min(rowsPerChunk, height - y)});
    }

    /// @throws RuntimeError naming the first row that cannot be read or written.
    void readFrom(const ImageModel& image, const Chunk& chunk, const Slice& slice);
    void writeTo(ImageModel& image, const Chunk& chunk, const Slice& slice) const;

private:
    struct Free {
        void operator()(std::byte* memory) const { std::free(memory); }
    };

    std::size_t rowBytes_;
    std::size_t bufferBytes_;
    std::unique_ptr<std::byte, Free> buffer_;
};

}  // namespace zel::cuda
