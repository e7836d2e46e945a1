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

}  // namespace zel::test
