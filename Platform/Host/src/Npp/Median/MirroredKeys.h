#pragma once

#include <algorithm>
#include <cstddef>

#include "Npp/Common/FilterJob.h"
#include "Npp/Common/PixelOrder.h"

namespace zel::host {

/// What medians compare: integers themselves, floats as integers of the same order, in which -0 lies below +0 and NaN
/// above all numbers.
template <typename Pixel>
using MedianOrder = PixelOrder<Pixel, false>;

/// The position of a line of that length that lies at `position` of the line that goes on mirrored at both ends, the
/// edge not repeated.
inline std::ptrdiff_t mirroredPosition(std::ptrdiff_t position, std::ptrdiff_t length) {
    if (length == 1) return 0;
    const std::ptrdiff_t period = 2 * length - 2;
    const std::ptrdiff_t wrapped = (position % period + period) % period;
    return std::min(wrapped, period - wrapped);
}

/// One checked call of a median filter.
template <typename Pixel>
struct MedianJob : FilterJob<Pixel> {
    NppiSize mask;
    NppiPoint anchor;

    Pixel* workBuffer;  ///< for the source as far as the masks reach; null for small masks

    MedianJob(const FilterArguments& call, void* buffer)
        : FilterJob<Pixel>(call), mask(call.mask), anchor(call.anchor), workBuffer(static_cast<Pixel*>(buffer)) {}

    /// The source with what the masks reach around it: pixels of the mask of output pixel (x, y) are at columns x ... x
    /// + mask.width - 1 and rows y ... y + mask.height - 1.
    std::ptrdiff_t reachedWidth() const { return std::ptrdiff_t{this->roi.width} + mask.width - 1; }
    std::ptrdiff_t reachedHeight() const { return std::ptrdiff_t{this->roi.height} + mask.height - 1; }

    /// That row in the work buffer.
    Pixel* mirroredRow(std::ptrdiff_t row) const { return workBuffer + row * reachedWidth(); }

    /// Writes the rows [begin, end) into the work buffer.
    void mirrorRows(std::ptrdiff_t begin, std::ptrdiff_t end) const {
        const auto copy = [](Pixel pixel) { return pixel; };
        for (std::ptrdiff_t row = begin; row < end; ++row) read(row, 0, reachedWidth(), mirroredRow(row), copy);
    }

    /// Keys of columns [first, first + count) of that row.
    template <typename Key>
    void readKeys(std::ptrdiff_t row, std::ptrdiff_t first, std::ptrdiff_t count, Key* keys) const {
        if (workBuffer == nullptr) return read(row, first, count, keys, MedianOrder<Pixel>::keyOf);
        const Pixel* const pixels = mirroredRow(row) + first;
        std::transform(pixels, pixels + count, keys, MedianOrder<Pixel>::keyOf);
    }

private:
    /// What `convert` makes of those pixels of the source.
    template <typename Value, typename Convert>
    void read(std::ptrdiff_t row, std::ptrdiff_t first, std::ptrdiff_t count, Value* values,
              const Convert& convert) const {
        const Pixel* const source = this->srcRow(mirroredPosition(this->offset.y + row - anchor.y, this->size.height));
        const std::ptrdiff_t width = this->size.width;
        const std::ptrdiff_t left = this->offset.x + first - anchor.x;  // in the source
        const std::ptrdiff_t begin = std::clamp<std::ptrdiff_t>(-left, 0, count);
        const std::ptrdiff_t end = std::clamp<std::ptrdiff_t>(width - left, begin, count);
        const auto mirror = [&](std::ptrdiff_t from, std::ptrdiff_t to) {
            for (std::ptrdiff_t i = from; i < to; ++i) values[i] = convert(source[mirroredPosition(left + i, width)]);
        };
        mirror(0, begin);
        std::transform(source + left + begin, source + left + end, values + begin, convert);
        mirror(end, count);
    }
};

}  // namespace zel::host
