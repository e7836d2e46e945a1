#pragma once

#include "FilterRun.h"
#include "zel/algorithms/CudaCrossCorrelation2d.h"

namespace zel::test {

/// A cross-correlation with its images and its measurement in place; the template lies where the input does.
struct CrossCorrelationRun : FilterRun<cuda::CudaCrossCorrelation2d> {
    CrossCorrelationRun(HostImage& image, const HostImage& pattern, int mode, const Placement& placement)
        : FilterRun(image, VoxelTypes::float32, placement),
          hostTemplate(pattern.getDataType(), {pattern.getDimension(0), pattern.getDimension(1)}) {
        copyRows(pattern, hostTemplate);
        if (placement.inputOnDevice) deviceTemplate = onDevice(pattern);
        filter.inputTemplate = placement.inputOnDevice ? deviceTemplate.get() : &hostTemplate;
        filter.correlationMode = mode;
        filter.outputMeasurement = &measurement;
    }

    HostImage hostTemplate;
    std::unique_ptr<ImageModel> deviceTemplate;
    CrossCorrelation2dMsr measurement;
};

}  // namespace zel::test
