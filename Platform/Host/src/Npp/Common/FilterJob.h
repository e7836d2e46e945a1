#pragma once

#include <nppdefs.h>

#include <algorithm>
#include <cstddef>

#include "Npp/Common/FilterArguments.h"

namespace zel::host {

/// The images of one checked call of a border filter.
template <typename T>
struct FilterJob {
    const std::byte* origin;  ///< source pixel (0, 0)
    std::ptrdiff_t srcStep;
    NppiSize size;
    NppiPoint offset;
    std::byte* dst;
    std::ptrdiff_t dstStep;
    NppiSize roi;

    explicit FilterJob(const FilterArguments& call)
        : origin(sourceOrigin(call, sizeof(T))),
          srcStep(call.srcStep),
          size(call.srcSize),
          offset(call.srcOffset),
          dst(static_cast<std::byte*>(call.dst)),
          dstStep(call.dstStep),
          roi(call.roi) {}

    /// A whole image into another one of its size.
    FilterJob(const std::byte* src, std::ptrdiff_t srcStep_, std::byte* dst_, std::ptrdiff_t dstStep_, NppiSize size_)
        : origin(src), srcStep(srcStep_), size(size_), offset{0, 0}, dst(dst_), dstStep(dstStep_), roi(size_) {}

    /// The source row of that number, or the nearest one of the image.
    const T* srcRow(std::ptrdiff_t y) const {
        const std::ptrdiff_t row = std::clamp<std::ptrdiff_t>(y, 0, size.height - 1);
        return reinterpret_cast<const T*>(origin + row * srcStep);
    }
    T* dstRow(std::ptrdiff_t y) const { return reinterpret_cast<T*>(dst + y * dstStep); }
    std::size_t roiBytes() const {
        return sizeof(T) * static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(roi.height);
    }
};

/// The source columns under the windows of output columns [begin, end): `padLeft` times the image's first one, `count`
/// columns of the image from `first` on, `padRight` times its last one.
struct SourceColumns {
    std::ptrdiff_t padLeft;
    std::ptrdiff_t first;
    std::ptrdiff_t count;
    std::ptrdiff_t padRight;

    /// @param window  columns before and behind an output pixel count, its own is among them.
    template <typename T, typename Window>
    SourceColumns(const FilterJob<T>& job, const Window& window, std::ptrdiff_t begin, std::ptrdiff_t end) {
        const std::ptrdiff_t low = job.offset.x + begin - window.before;
        const std::ptrdiff_t high = low + (end - begin) + window.size - 1;
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

}  // namespace zel::host
