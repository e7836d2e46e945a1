#pragma once

#include <algorithm>
#include <bit>

#include "Npp/Common/WorkBuffer.h"
#include "Npp/Median/ColumnHistograms.h"
#include "Npp/Median/MirroredKeys.h"
#include "Npp/Median/RankedTile.h"

namespace zel::host {

/// The tiles that a region is cut into along one axis: all of about the same size.
struct RankTiles {
    std::ptrdiff_t count;
    std::ptrdiff_t size;     ///< pixels of the result
    std::ptrdiff_t reached;  ///< pixels under their windows

    RankTiles(std::ptrdiff_t pixels, std::ptrdiff_t window) {
        constexpr std::ptrdiff_t usual = 256;
        const std::ptrdiff_t maxReached =
            std::max(usual, static_cast<std::ptrdiff_t>(std::bit_ceil(static_cast<std::size_t>(2 * window))));
        count = (pixels + maxReached - window) / (maxReached - window + 1);
        size = (pixels + count - 1) / count;
        reached = size + window - 1;
    }
};

/// Medians of any pixels under large windows, in tiles whose pixels are ranked: histograms find the bin of the median,
/// comparisons find it in the bin.
///
/// @tparam Count       see ColumnHistograms.
/// @tparam Coordinate  see RankedTile.
template <typename Pixel, typename Count, typename Coordinate>
class MedianByRanks {
public:
    MedianByRanks(const MedianJob<Pixel>& job, const RankTiles& across, const RankTiles& down)
        : job_(job),
          across_(across),
          down_(down),
          buffer_(RankedTile<Key, Coordinate>::bytesFor(across.reached * down.reached) +
                  WorkBuffer::bytesFor<Key>(static_cast<std::size_t>(across.reached)) +
                  ColumnHistograms<Count>::bytesFor(across.reached)),
          tile_(buffer_, across.reached * down.reached),
          line_(buffer_.template take<Key>(static_cast<std::size_t>(across.reached))),
          histograms_(buffer_, across.reached, job.mask.width) {}

    void filterTile(std::ptrdiff_t tileX, std::ptrdiff_t tileY) {
        const std::ptrdiff_t left = tileX * across_.size, top = tileY * down_.size;
        const std::ptrdiff_t width = std::min<std::ptrdiff_t>(across_.size, job_.roi.width - left);
        const std::ptrdiff_t height = std::min<std::ptrdiff_t>(down_.size, job_.roi.height - top);
        if (width <= 0 || height <= 0) return;
        const std::ptrdiff_t columns = width + job_.mask.width - 1;
        tile_.sort(columns, height + job_.mask.height - 1, line_,
                   [&](std::ptrdiff_t y, Key* keys) { job_.readKeys(top + y, left, columns, keys); });
        histograms_.reset(columns);
        for (std::ptrdiff_t j = 0; j < job_.mask.height; ++j) histograms_.addRow(tile_.binsOfRow(j));
        const auto rank = static_cast<Count>(std::ptrdiff_t{job_.mask.width} * job_.mask.height / 2);
        for (std::ptrdiff_t y = 0;; ++y) {
            Pixel* const dst = job_.dstRow(top + y) + left;
            histograms_.find(rank, [&](std::ptrdiff_t x, std::uint8_t bin, Count rest) {
                dst[x] = MedianOrder<Pixel>::pixelOf(
                    tile_.find(bin, rest, static_cast<Coordinate>(x), static_cast<Coordinate>(y),
                               static_cast<Coordinate>(job_.mask.width), static_cast<Coordinate>(job_.mask.height)));
            });
            if (y + 1 == height) break;
            histograms_.replaceRow(tile_.binsOfRow(y), tile_.binsOfRow(y + job_.mask.height));
        }
    }

private:
    using Key = typename MedianOrder<Pixel>::Key;

    const MedianJob<Pixel>& job_;
    RankTiles across_;
    RankTiles down_;
    WorkBuffer buffer_;
    RankedTile<Key, Coordinate> tile_;
    Key* line_;
    ColumnHistograms<Count> histograms_;
};

}  // namespace zel::host
