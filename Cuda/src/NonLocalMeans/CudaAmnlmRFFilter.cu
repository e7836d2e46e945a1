#include "CudaAmnlmRFFilter.h"

#include "CudaAmnlmDataOps.h"
#include "CudaUtils_CUDA.h"
#include "NonLocalMeans/DeviceVector.h"
#include "RecursiveSweep.h"
#include "VoxelLaunch.h"
#include "lanes.h"

namespace amnlm {

using namespace zel::cuda;

namespace {

/// Sets each voxel's distance to the one before it along an axis, 1 where there is none.
template <int axis>
__device__ __forceinline__ void stepLengths(float* distance, const float* joint, const SweepAxis<axis> along,
                                            float scale) {
    constexpr int dx = axis == 0, dy = axis == 1, dz = axis == 2;
    const auto voxel = [=](int x, int y, int z) {
        return (static_cast<std::uint64_t>(z) * along.ny + y) * along.nx + x;
    };
    // The first voxels come apart, so that no lane has to choose.
    forEachVoxel(dx ? 1 : along.nx, dy ? 1 : along.ny, dz ? 1 : along.nz,
                 [=](int x, int y, int z) { distance[voxel(x, y, z)] = 1.0f; });
    withChannels(along.channels, [=](const auto channels) {
        const std::uint64_t back = along.step() * channels;
        forEachVoxel(along.nx - dx, along.ny - dy, along.nz - dz, [=](int x, int y, int z) {
            const std::uint64_t v = voxel(x + dx, y + dy, z + dz);
            const float* const values = joint + v * channels;
            float sum = 0.0f;
            for (int k = 0; k < channels; ++k) {
                const float difference = (values - back)[k] - values[k];
                sum += difference * difference;
            }
            distance[v] = std::sqrt(1.0f + scale * sum);
        });
    });
}

/// Makes the steps' lengths into their weights, which both sweeps and all channels take.
template <int axis>
__device__ __forceinline__ void sweep(float* data, float* distance, const SweepAxis<axis> along, float a) {
    const FixedBasePower power(a);
    const auto weigh = [=](const auto& lines, int begin, int end) {
        if (lines.firstChannel != 0) return;
        lines.eachVoxel(begin, end, [&](std::uint64_t voxel) { distance[voxel] = power(distance[voxel]); });
    };
    sweepBothWays(data, along, 0.0f, weigh, [=](auto& weights, const auto& lines, int end) {
        lines.eachLine([&](unsigned int line) { weights[line] = distance[lines.voxelAt(end, line)]; });
    });
}

}  // namespace

__global__ void kernRFDiffX(float* distance, const float* joint, int nz, int ny, int nx, int c, float scale) {
    stepLengths(distance, joint, AlongX{nz, ny, nx, c}, scale);
}
__global__ void kernRFDiffY(float* distance, const float* joint, int nz, int ny, int nx, int c, float scale) {
    stepLengths(distance, joint, AlongY{nz, ny, nx, c}, scale);
}
__global__ void kernRFDiffZ(float* distance, const float* joint, int nz, int ny, int nx, int c, float scale) {
    stepLengths(distance, joint, AlongZ{nz, ny, nx, c}, scale);
}

__global__ void kernRFDotX(float* data, float* distance, int nz, int ny, int nx, int c, float a) {
    sweep(data, distance, AlongX{nz, ny, nx, c}, a);
}
__global__ void kernRFDotY(float* data, float* distance, int nz, int ny, int nx, int c, float a) {
    sweep(data, distance, AlongY{nz, ny, nx, c}, a);
}
__global__ void kernRFDotZ(float* data, float* distance, int nz, int ny, int nx, int c, float a) {
    sweep(data, distance, AlongZ{nz, ny, nx, c}, a);
}

namespace {

/// rfFilter() on what is in `out` already.
void filterInPlace(const RkCUDAAMNLMData& joint, float rangeSigma, float spatialSigma, RkCUDAAMNLMData& out) {
    const int nz = out.dims[0], ny = out.dims[1], nx = out.dims[2], c = out.dims[3];
    const int jointChannels = joint.dims[3];
    const float a = feedbackOf(spatialSigma);
    const float ratio = spatialSigma / rangeSigma;
    const float scale = ratio * ratio;
    ScratchVector<float> lengths(static_cast<std::size_t>(nx) * ny * nz);
    float* const distance = thrust::raw_pointer_cast(lengths.data());
    const cudaLaunchConfig_t voxels = voxelLaunch(nx, ny, nz);
    const auto pass = [&](auto diff, auto dot, const cudaLaunchConfig_t& lines) {
        cudaLaunchKernelEx(&voxels, diff, distance, joint.data, nz, ny, nx, jointChannels, scale);
        cudaLaunchKernelEx(&lines, dot, out.data, distance, nz, ny, nx, c, a);
    };
    pass(kernRFDiffX, kernRFDotX, lineLaunch(ny, nz));
    pass(kernRFDiffY, kernRFDotY, lineLaunch(nx, nz));
    pass(kernRFDiffZ, kernRFDotZ, lineLaunch(nx, ny));
}

}  // namespace

void rfFilter(const RkCUDAAMNLMData& data, const RkCUDAAMNLMData& joint, float rangeSigma, float spatialSigma,
              RkCUDAAMNLMData& out) {
    checkCudaFatal(cudaMemcpy(out.data, data.data, out.byteSize(), cudaMemcpyDeviceToDevice));
    filterInPlace(joint, rangeSigma, spatialSigma, out);
}

void rfFilter(RkCUDAAMNLMData&& data, const RkCUDAAMNLMData& joint, float rangeSigma, float spatialSigma,
              RkCUDAAMNLMData& out) {
    exchangeData(data, out);
    filterInPlace(joint, rangeSigma, spatialSigma, out);
}

}  // namespace amnlm
