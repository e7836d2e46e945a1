#include "CudaAmnlmEigenvec.h"

#include <thrust/functional.h>
#include <thrust/reduce.h>
#include <thrust/transform.h>
#include <thrust/transform_reduce.h>

#include "CudaAmnlmStats_CUDA.h"
#include "ThrustPolicy.h"
#include "VectorFunctors.h"
#include "VoxelLaunch.h"
#include "lanes.h"

namespace amnlm {

using namespace zel::cuda;

/// `scratch` holds one channel after the other, to be summed. Outside the cluster the sums get a 0.
__global__ void multiplyXDots(float* scratch, const float* difference, const bool* cluster, const float* direction,
                              int nz, int ny, int nx, int channelCount) {
    const std::int64_t voxels = std::int64_t{nz} * ny * nx;
    withChannels(channelCount, [=](const auto channels) {
        forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
            const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
            float dot = 0;
            for (int k = 0; k < channels; ++k) dot += direction[k] * difference[v * channels + k];
            for (int k = 0; k < channels; ++k)
                scratch[k * voxels + v] = keepIf(cluster[v], dot * difference[v * channels + k]);
        });
    });
}

void computeDominantDirection(const RkCUDAAMNLMData& difference, const DeviceVector<bool>& cluster,
                              std::int32_t manifoldIterations, DeviceVector<float>& direction) {
    const auto& [nz, ny, nx, channels] = difference.dims;
    const std::int64_t voxels = std::int64_t{nz} * ny * nx;
    DeviceVector<float> start(static_cast<std::size_t>(channels));
    for (std::size_t k = 0; k < start.size(); ++k) start[k] = drawUnit() - 0.5f;
    ScratchVector<float> scratch(static_cast<std::size_t>(voxels * channels));
    const cudaLaunchConfig_t config = voxelLaunch(nx, ny, nz);
    for (std::int32_t pass = 0; pass < manifoldIterations; ++pass) {
        cudaLaunchKernelEx(&config, multiplyXDots, thrust::raw_pointer_cast(scratch.data()), difference.data,
                           thrust::raw_pointer_cast(cluster.data()),
                           thrust::raw_pointer_cast(pass == 0 ? start.data() : direction.data()), nz, ny, nx, channels);
        std::vector<float> sums;
        for (std::int32_t k = 0; k < channels; ++k) {
            const auto channel = scratch.begin() + k * voxels;
            sums.push_back(thrust::reduce(thrustPolicy, channel, channel + voxels, 0.0f, thrust::plus<float>()));
        }
        for (std::size_t k = 0; k < sums.size(); ++k) direction[k] = sums[k];
    }
    const float squares = thrust::transform_reduce(thrustPolicy, direction.begin(), direction.end(),
                                                   square_functor<float>(), 0.0f, thrust::plus<float>());
    thrust::transform(thrustPolicy, direction.begin(), direction.end(), direction.begin(),
                      sscal_functor<float>{1 / std::sqrt(squares)});
}

}  // namespace amnlm
