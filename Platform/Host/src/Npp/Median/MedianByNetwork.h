#pragma once

#include <algorithm>
#include <cstring>

#include "Npp/Common/WorkBuffer.h"
#include "Npp/Median/MirroredKeys.h"
#include "Npp/Median/NetworkLayout.h"

namespace zel::host {

/// Medians of windows up to some thirty pixels wide: by a network of minima and maxima.
///
/// @tparam Run  run(memory, columns) carries the network out, see FixedNetwork and MedianNetwork.
template <typename Pixel, typename Run>
class MedianByNetwork {
public:
    MedianByNetwork(const MedianJob<Pixel>& job, const NetworkLayout& layout, const Run& run)
        : job_(job),
          layout_(layout),
          run_(run),
          buffer_(WorkBuffer::bytesFor<std::byte>(layout.bytes) + WorkBuffer::bytesFor<Key>(lineLength())),
          memory_(buffer_.template take<std::byte>(layout.bytes)),
          line_(buffer_.template take<Key>(lineLength())) {}

    /// Output rows [begin, end).
    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        const std::ptrdiff_t maxWidth = layout_.maxColumnsOut();
        for (std::ptrdiff_t left = 0; left < job_.roi.width; left += maxWidth)
            filterStrip(begin, end, left, std::min<std::ptrdiff_t>(maxWidth, job_.roi.width - left));
    }

private:
    using Key = typename MedianOrder<Pixel>::Key;

    std::size_t lineLength() const { return static_cast<std::size_t>(layout_.rowStride) / sizeof(Key); }

    void filterStrip(std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t left, std::ptrdiff_t width) {
        const std::ptrdiff_t height = layout_.tile.height;
        const std::ptrdiff_t shared = layout_.rows() - height;  // rows that the next row of tiles reaches too
        for (std::ptrdiff_t j = 0; j < shared; ++j) readRow(begin + j, left, width, memory_ + j * layout_.rowStride);
        std::ptrdiff_t tileRow = 0;
        for (std::ptrdiff_t top = begin; top < end; top += height, ++tileRow) {
            if (tileRow == layout_.tileRows()) {
                const std::byte* const rows = memory_ + tileRow * height * layout_.rowStride;
                std::memmove(memory_, rows, static_cast<std::size_t>(shared * layout_.rowStride));
                tileRow = 0;
            }
            std::byte* const memory = memory_ + tileRow * height * layout_.rowStride;
            for (std::ptrdiff_t j = shared; j < layout_.rows(); ++j) {
                const std::ptrdiff_t last = job_.reachedHeight() - 1;  // below the region tiles see any row
                readRow(std::min(top + j, last), left, width, memory + j * layout_.rowStride);
            }
            run_(memory, width);
            for (std::ptrdiff_t j = 0; j < std::min(height, end - top); ++j)
                writeRow(memory + layout_.medianAddress(j * layout_.tile.width), job_.dstRow(top + j) + left, width);
        }
    }

    /// Calls body with the tile's width as a constant.
    template <typename Body>
    void withTileWidth(const Body& body) const {
        switch (layout_.tile.width) {
            case 2:
                return body(std::integral_constant<std::ptrdiff_t, 2>());
            case 4:
                return body(std::integral_constant<std::ptrdiff_t, 4>());
            case 8:
                return body(std::integral_constant<std::ptrdiff_t, 8>());
            default:
                return body(std::integral_constant<std::ptrdiff_t, 16>());
        }
    }

    /// Reads row y of the pixels under the windows into its planes.
    void readRow(std::ptrdiff_t y, std::ptrdiff_t left, std::ptrdiff_t width, std::byte* row) const {
        const std::ptrdiff_t count = width + job_.mask.width - 1;
        if (layout_.tile.width == 1) return job_.readKeys(y, left, count, reinterpret_cast<Key*>(row));
        job_.readKeys(y, left, count, line_);
        withTileWidth([&](auto planes) {
            Key* __restrict const to = reinterpret_cast<Key*>(row);
            const Key* __restrict const from = line_;
            const std::ptrdiff_t stride = layout_.planeStride / layout_.keyBytes;
            const std::ptrdiff_t length = (count + planes - 1) / planes;
#pragma omp simd
            for (std::ptrdiff_t i = 0; i < length; ++i)
                for (std::ptrdiff_t p = 0; p < planes; ++p) to[p * stride + i] = from[i * planes + p];
        });
    }

    void writeRow(const std::byte* medians, Pixel* dst, std::ptrdiff_t width) const {
        const Key* const planesBegin = reinterpret_cast<const Key*>(medians);
        if (layout_.tile.width == 1) {
            std::transform(planesBegin, planesBegin + width, dst, MedianOrder<Pixel>::pixelOf);
            return;
        }
        withTileWidth([&](auto planes) {
            const Key* __restrict const from = planesBegin;
            Key* __restrict const to = line_;
            const std::ptrdiff_t stride = layout_.medianStride / layout_.keyBytes;
            const std::ptrdiff_t length = (width + planes - 1) / planes;
#pragma omp simd
            for (std::ptrdiff_t i = 0; i < length; ++i)
                for (std::ptrdiff_t p = 0; p < planes; ++p) to[i * planes + p] = from[p * stride + i];
        });
        std::transform(line_, line_ + width, dst, MedianOrder<Pixel>::pixelOf);
    }

    const MedianJob<Pixel>& job_;
    const NetworkLayout& layout_;
    const Run& run_;
    WorkBuffer buffer_;
    std::byte* memory_;
    Key* line_;
};

}  // namespace zel::host
