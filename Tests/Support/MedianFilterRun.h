#pragma once

#include "FilterRun.h"
#include "zel/algorithms/CudaMedianFilter2d.h"

namespace zel::test {

/// A median filter with its images in place.
struct MedianFilterRun : FilterRun<cuda::CudaMedianFilter2d> {
    MedianFilterRun(HostImage& image, unsigned radius, const Placement& placement)
        : FilterRun(image, image.getDataType(), placement) {
        filter.kernelRadius = radius;
    }
};

/// See SmallFilterRuns.h.
struct SmallMedianFilter : MedianFilterRun {
    using Pixel = std::int16_t;
    static constexpr ImageSize size{60, 50};
    static constexpr Vector2<unsigned> tile{34, 30};
    static constexpr std::uint64_t blocks = 2 * 2, passes = 1;
    static constexpr auto work = "nppiFilterMedianBorder_16s_C1R_Ctx";

    /// With a radius that needs a work buffer.
    SmallMedianFilter(HostImage& image, const Placement& placement) : MedianFilterRun(image, 4, placement) {}
};

}  // namespace zel::test
