#pragma once

#include <algorithm>
#include <cstring>

#include "Npp/Common/WorkBuffer.h"
#include "Npp/Median/MedianNetwork.h"
#include "Npp/Median/MirroredKeys.h"

namespace zel::host {

/// Medians of windows up to some thirty pixels wide: by a network of minima and maxima.
template <typename Pixel>
class MedianByNetwork {
public:
    MedianByNetwork(const MedianJob<Pixel>& job, const MedianNetwork& network)
        : job_(job),
          network_(network),
          tile_(network.tile()),
          buffer_(WorkBuffer::bytesFor<std::byte>(network.bytes()) + WorkBuffer::bytesFor<Key>(lineLength())),
          memory_(buffer_.template take<std::byte>(network.bytes())),
          line_(buffer_.template take<Key>(lineLength())) {}

    /// Output rows [begin, end).
    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) {
        for (std::ptrdiff_t left = 0; left < job_.roi.width; left += network_.stripWidth()) {
            filterStrip(begin, end, left, std::min<std::ptrdiff_t>(network_.stripWidth(), job_.roi.width - left));
        }
    }

private:
    using Key = typename MedianOrder<Pixel>::Key;

    std::size_t lineLength() const { return static_cast<std::size_t>(network_.rowStride()); }
    Key* row(std::ptrdiff_t j) const { return reinterpret_cast<Key*>(memory_) + j * network_.rowStride(); }

    void filterStrip(std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t left, std::ptrdiff_t width) {
        const std::ptrdiff_t shared = network_.rows() - tile_.height;  // rows that the next row of tiles reaches too
        for (std::ptrdiff_t j = 0; j < shared; ++j) readRow(begin + j, left, width, j);
        for (std::ptrdiff_t top = begin; top < end; top += tile_.height) {
            for (std::ptrdiff_t j = 0; j < tile_.height; ++j) {
                const std::ptrdiff_t last = job_.reachedHeight() - 1;  // below the region tiles see any row
                readRow(std::min(top + shared + j, last), left, width, shared + j);
            }
            network_.template run<Key>(memory_, width);
            for (std::ptrdiff_t j = 0; j < std::min<std::ptrdiff_t>(tile_.height, end - top); ++j)
                writeRow(j, job_.dstRow(top + j) + left, width);
            std::memmove(row(0), row(tile_.height),
                         static_cast<std::size_t>(shared * network_.rowStride()) * sizeof(Key));
        }
    }

    /// Calls body with the tile's width as a constant.
    template <typename Body>
    void withTileWidth(const Body& body) const {
        switch (tile_.width) {
            case 1:
                return body(std::integral_constant<std::ptrdiff_t, 1>());
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

    /// Row y of the pixels under the windows, as row j of the network's memory.
    void readRow(std::ptrdiff_t y, std::ptrdiff_t left, std::ptrdiff_t width, std::ptrdiff_t j) const {
        const std::ptrdiff_t count = width + job_.mask.width - 1;
        job_.readKeys(y, left, count, line_);
        withTileWidth([&](auto planes) {
            Key* __restrict const to = row(j);
            const Key* __restrict const from = line_;
            const std::ptrdiff_t stride = network_.planeStride();
            const std::ptrdiff_t length = (count + planes - 1) / planes;
#pragma omp simd
            for (std::ptrdiff_t i = 0; i < length; ++i)
                for (std::ptrdiff_t p = 0; p < planes; ++p) to[p * stride + i] = from[i * planes + p];
        });
    }

    void writeRow(std::ptrdiff_t j, Pixel* dst, std::ptrdiff_t width) const {
        withTileWidth([&](auto planes) {
            const std::ptrdiff_t stride = network_.medianStride();
            const Key* __restrict const from =
                reinterpret_cast<const Key*>(memory_ + network_.medians()) + j * planes * stride;
            Key* __restrict const to = line_;
            const std::ptrdiff_t length = (width + planes - 1) / planes;
#pragma omp simd
            for (std::ptrdiff_t i = 0; i < length; ++i)
                for (std::ptrdiff_t p = 0; p < planes; ++p) to[i * planes + p] = from[p * stride + i];
        });
        std::transform(line_, line_ + width, dst, MedianOrder<Pixel>::pixelOf);
    }

    const MedianJob<Pixel>& job_;
    const MedianNetwork& network_;
    NppiSize tile_;
    WorkBuffer buffer_;
    std::byte* memory_;
    Key* line_;
};

}  // namespace zel::host
