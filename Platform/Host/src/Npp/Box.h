#pragma once

#include <nppdefs.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "FilterArguments.h"

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
struct BoxJob {
    const std::byte* origin;  ///< source pixel (0, 0)
    std::ptrdiff_t srcStep;
    NppiSize size;
    NppiPoint offset;
    std::byte* dst;
    std::ptrdiff_t dstStep;
    NppiSize roi;
    WindowAxis windowX;
    WindowAxis windowY;
    std::uint64_t maskHeight;
    std::uint64_t area;

    explicit BoxJob(const FilterArguments& call)
        : origin(sourceOrigin(call, sizeof(T))),
          srcStep(call.srcStep),
          size(call.srcSize),
          offset(call.srcOffset),
          dst(static_cast<std::byte*>(call.dst)),
          dstStep(call.dstStep),
          roi(call.roi),
          windowX(call.mask.width, call.anchor.x, call.srcSize.width),
          windowY(call.mask.height, call.anchor.y, call.srcSize.height),
          maskHeight(static_cast<std::uint64_t>(call.mask.height)),
          area(static_cast<std::uint64_t>(call.mask.width) * maskHeight) {}

    /// The source row of that number, or the nearest one of the image.
    const T* srcRow(std::ptrdiff_t y) const {
        const std::ptrdiff_t row = std::clamp<std::ptrdiff_t>(y, 0, size.height - 1);
        return reinterpret_cast<const T*>(origin + row * srcStep);
    }
    T* dstRow(std::ptrdiff_t y) const { return reinterpret_cast<T*>(dst + y * dstStep); }
};

/// The source columns under the windows of output columns [begin, end): `padLeft` times the image's first one, `count`
/// columns of the image from `first` on, `padRight` times its last one.
struct BoxColumns {
    std::ptrdiff_t padLeft;
    std::ptrdiff_t first;
    std::ptrdiff_t count;
    std::ptrdiff_t padRight;

    template <typename T>
    BoxColumns(const BoxJob<T>& job, std::ptrdiff_t begin, std::ptrdiff_t end) {
        const std::ptrdiff_t low = job.offset.x + begin - job.windowX.before;
        const std::ptrdiff_t high = low + (end - begin) + job.windowX.size - 1;
        first = std::max<std::ptrdiff_t>(low, 0);
        const std::ptrdiff_t last = std::min<std::ptrdiff_t>(high, job.size.width);
        padLeft = first - low;
        count = last - first;
        padRight = high - last;
    }

    std::ptrdiff_t padded() const { return padLeft + count + padRight; }

    /// Fills the padding around the `count` values that stand at line + padLeft.
    template <typename Value>
    void pad(Value* line) const {
        std::fill_n(line, padLeft, line[padLeft]);
        std::fill_n(line + padLeft + count, padRight, line[padLeft + count - 1]);
    }
};

/// Filters output rows [begin, end). Which rows a call takes changes no result.
void filterBoxRows(const BoxJob<Npp8u>& job, std::ptrdiff_t begin, std::ptrdiff_t end);
void filterBoxRows(const BoxJob<Npp16u>& job, std::ptrdiff_t begin, std::ptrdiff_t end);
void filterBoxRows(const BoxJob<Npp16s>& job, std::ptrdiff_t begin, std::ptrdiff_t end);
void filterBoxRows(const BoxJob<Npp32f>& job, std::ptrdiff_t begin, std::ptrdiff_t end);

}  // namespace zel::host
