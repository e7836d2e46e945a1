#pragma once

#include "FilterRun.h"
#include "zel/algorithms/Morphology2d.h"

namespace zel::test {

/// Erosion, dilation, opening or closing with its images in place.
template <typename Algo>
struct MorphologyRun : FilterRun<Algo> {
    MorphologyRun(HostImage& image, unsigned radius, bool square, const Placement& placement)
        : FilterRun<Algo>(image, image.getDataType(), placement) {
        this->filter.kernelRadius = radius;
        this->filter.neighborhood = square ? 1 : 0;
    }
};

}  // namespace zel::test
