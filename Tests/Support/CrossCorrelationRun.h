#pragma once

#include "FilterRun.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"

namespace zel::test {

/// A cross-correlation with its images and its measurement in place; the template lies where the input does.
struct CrossCorrelationRun : FilterRun<cuda::CudaCrossCorrelation2d> {
    CrossCorrelationRun(HostImage& image, const HostImage& pattern, int mode, const Placement& placement)
        : FilterRun(image, VoxelTypes::float32, placement) {
        if (placement.inputOnDevice) deviceTemplate = onDevice(pattern);
        filter.inputTemplate = placement.inputOnDevice ? deviceTemplate.get() : &pattern;
        filter.correlationMode = mode;
        filter.outputMeasurement = &measurement;
    }

    std::unique_ptr<ImageModel> deviceTemplate;
    CrossCorrelation2dMsr measurement;
};

}  // namespace zel::test
