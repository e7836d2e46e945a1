#pragma once

#include <algorithm>

#include "Npp/Common/WorkBuffer.h"
#include "Npp/Median/ColumnHistograms.h"
#include "Npp/Median/MirroredKeys.h"

namespace zel::host {

/// Medians of bytes under large windows.
///
/// @tparam Count  see ColumnHistograms.
template <typename Count>
class MedianByHistograms {
public:
    explicit MedianByHistograms(const MedianJob<Npp8u>& job) : job_(job) {}

    /// Output rows [begin, end), in strips whose histograms fit the second-level cache.
    void filter(std::ptrdiff_t begin, std::ptrdiff_t end) const {
        const std::ptrdiff_t maxWidth = std::max<std::ptrdiff_t>(1024 - job_.mask.width, 2 * job_.mask.width);
        for (std::ptrdiff_t left = 0; left < job_.roi.width; left += maxWidth)
            filterStrip(begin, end, left, std::min<std::ptrdiff_t>(maxWidth, job_.roi.width - left));
    }

private:
    void filterStrip(std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t left, std::ptrdiff_t width) const {
        const std::ptrdiff_t columns = width + job_.mask.width - 1;
        WorkBuffer buffer(ColumnHistograms<Count>::bytesFor(columns));
        ColumnHistograms<Count> histograms(buffer, columns, job_.mask.width);
        histograms.reset(columns);
        const auto row = [&](std::ptrdiff_t y) { return job_.mirroredRow(y) + left; };
        for (std::ptrdiff_t j = 0; j < job_.mask.height; ++j) histograms.addRow(row(begin + j));
        const auto rank = static_cast<Count>(std::ptrdiff_t{job_.mask.width} * job_.mask.height / 2);
        for (std::ptrdiff_t y = begin;; ++y) {
            Npp8u* const dst = job_.dstRow(y) + left;
            histograms.find(rank, [=](std::ptrdiff_t x, Npp8u byte, Count) { dst[x] = byte; });
            if (y + 1 == end) break;
            histograms.replaceRow(row(y), row(y + job_.mask.height));
        }
    }

    const MedianJob<Npp8u>& job_;
};

}  // namespace zel::host
