#pragma once

#include "FilterRun.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

namespace zel::test {

/// A box filter with its images in place.
struct BoxFilterRun : FilterRun<cuda::CudaBoxFilter2d> {
    BoxFilterRun(HostImage& image, unsigned kernelX, unsigned kernelY, const Placement& placement)
        : FilterRun(image, image.getDataType(), placement) {
        filter.kernelSizeX = kernelX;
        filter.kernelSizeY = kernelY;
    }
};

/// See SmallFilterRuns.h.
struct SmallBoxFilter : BoxFilterRun {
    using Pixel = std::int16_t;
    static constexpr ImageSize size{60, 50};
    static constexpr Vector2<unsigned> tile{22, 18};
    static constexpr std::uint64_t blocks = 4 * 3, passes = 1;
    static constexpr auto work = "nppiFilterBoxBorder_16s_C1R_Ctx";

    SmallBoxFilter(HostImage& image, const Placement& placement) : BoxFilterRun(image, 5, 3, placement) {}
};

}  // namespace zel::test
