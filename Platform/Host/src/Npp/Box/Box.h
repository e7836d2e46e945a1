#pragma once

#include <nppdefs.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Npp/Common/FilterArguments.h"
#include "Npp/Common/FilterJob.h"

namespace zel::host {

/// A window along one axis of an image. Where it reaches beyond the image for whichever pixel, it is cut to what
/// differs from pixel to pixel; the image's outermost pixels then count further times, the same for every output pixel.
/// This bounds the work for masks of any size, and depends on image, mask and anchor alone, not on the region.
struct WindowAxis {
    std::ptrdiff_t before;     ///< pixels before the output pixel
    std::ptrdiff_t size;       ///< at most twice the image's length
    std::uint64_t firstTimes;  ///< how often the image's first pixel counts beside the window
    std::uint64_t lastTimes;

    WindowAxis(int mask, int anchor, int length) {
        const int after = mask - 1 - anchor;
        const int keptAfter = std::min(after, length - 1);
        before = std::min(anchor, length - 1);
        size = before + 1 + keptAfter;
        firstTimes = static_cast<std::uint64_t>(anchor - before);
        lastTimes = static_cast<std::uint64_t>(after - keptAfter);
    }
};

/// One checked call of a box filter.
template <typename T>
struct BoxJob : FilterJob<T> {
    WindowAxis windowX;
    WindowAxis windowY;
    std::uint64_t maskHeight;
    std::uint64_t area;

    explicit BoxJob(const FilterArguments& call)
        : FilterJob<T>(call),
          windowX(call.mask.width, call.anchor.x, call.srcSize.width),
          windowY(call.mask.height, call.anchor.y, call.srcSize.height),
          maskHeight(static_cast<std::uint64_t>(call.mask.height)),
          area(static_cast<std::uint64_t>(call.mask.width) * maskHeight) {}

    /// The image's rows under the windows of output row y.
    std::ptrdiff_t firstSrcRowUnder(std::ptrdiff_t y) const { return nearestRow(this->offset.y + y - windowY.before); }
    std::ptrdiff_t lastSrcRowUnder(std::ptrdiff_t y) const {
        return nearestRow(this->offset.y + y - windowY.before + windowY.size - 1);
    }

private:
    std::ptrdiff_t nearestRow(std::ptrdiff_t y) const {
        return std::clamp<std::ptrdiff_t>(y, 0, this->size.height - 1);
    }
};

/// Filters output rows [begin, end). Which rows a call takes changes no result.
void filterBoxRows(const BoxJob<Npp8u>& job, std::ptrdiff_t begin, std::ptrdiff_t end);
void filterBoxRows(const BoxJob<Npp16u>& job, std::ptrdiff_t begin, std::ptrdiff_t end);
void filterBoxRows(const BoxJob<Npp16s>& job, std::ptrdiff_t begin, std::ptrdiff_t end);
void filterBoxRows(const BoxJob<Npp32f>& job, std::ptrdiff_t begin, std::ptrdiff_t end);

}  // namespace zel::host
