#pragma once

#include "FilterRun.h"
#include "zel/algorithms/CudaGaussianFilter3d.h"

namespace zel::test {

/// What a Gaussian filter is told beside its images.
struct GaussianParameters {
    Vector3<double> sigma{1, 1, 1};
    double kernelSizeFactor = 2;
    bool voxelTypeIntermediate = false;
};

/// A Gaussian filter with its images in place.
struct GaussianFilterRun : FilterRun<cuda::CudaGaussianFilter3d> {
    GaussianFilterRun(HostImage& image, VoxelTypes outputType, const GaussianParameters& parameters,
                      const Placement3d& placement)
        : FilterRun(image, outputType, placement) {
        filter.standardDeviation = parameters.sigma;
        filter.kernelSizeFactor = parameters.kernelSizeFactor;
        filter.voxelTypeIntermediate = parameters.voxelTypeIntermediate;
    }
};

}  // namespace zel::test
