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

/// What the algorithm makes of an image in host memory, as one block.
template <typename Algo, typename T>
std::vector<T> morphology(HostImage& image, unsigned radius, bool square) {
    MorphologyRun<Algo> run(image, radius, square, {});
    run.filter.run();
    return run.template result<T>();
}

}  // namespace zel::test
