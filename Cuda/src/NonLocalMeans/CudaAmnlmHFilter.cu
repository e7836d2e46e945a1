#include "CudaAmnlmHFilter.h"

#include "CudaUtils_CUDA.h"
#include "RecursiveSweep.h"
#include "lanes.h"

namespace amnlm {

using namespace zel::cuda;

namespace {

/// The sweeps of hFilter() along y and z.
template <int axis>
__device__ __forceinline__ void sweep(float* data, const SweepAxis<axis> along, float a) {
    const auto nothing = [](const auto&...) {};
    sweepBothWays(data, along, a, nothing, nothing);
}

}  // namespace

/// The forward sweep needs the source alone, so that the sweep back does both. The first sample is in `dst` already.
__global__ void kernHFilterX(const float* src, float* dst, int nz, int ny, int nx, int c, float a) {
    if (nx < 2) return;
    forEachSweepLine(AlongX{nz, ny, nx, c}, [=](const auto lines) {
        auto value = lines.fill(0.0f);
        auto here = lines.fill(0.0f);
        lines.each([&](const auto i) {
            here[i] = src[lines.at(nx - 2, i)];
            value[i] = blend(a, here[i], src[lines.at(nx - 1, i)]);
            dst[lines.at(nx - 1, i)] = value[i];
        });
        for (int p = nx - 2; p > 0; --p)
            lines.each([&](const auto i) {
                const float before = src[lines.at(p - 1, i)];
                value[i] = blend(a, value[i], blend(a, before, here[i]));
                here[i] = before;
                dst[lines.at(p, i)] = value[i];
            });
        lines.each([&](const auto i) { dst[lines.at(0, i)] = blend(a, value[i], dst[lines.at(0, i)]); });
    });
}

__global__ void kernHFilterY(float* data, int nz, int ny, int nx, int c, float a) {
    sweep(data, AlongY{nz, ny, nx, c}, a);
}

__global__ void kernHFilterZ(float* data, int nz, int ny, int nx, int c, float a) {
    sweep(data, AlongZ{nz, ny, nx, c}, a);
}

void hFilter(const RkCUDAAMNLMData& in, float sigma, RkCUDAAMNLMData& out) {
    const auto [nz, ny, nx, c] = in.dims;
    const float a = feedbackOf(sigma);
    const std::size_t voxelBytes = c * sizeof(float), lineBytes = nx * voxelBytes;
    checkCudaFatal(cudaMemcpy2DAsync(out.data, lineBytes, in.data, lineBytes, voxelBytes, std::size_t{1} * ny * nz,
                                     cudaMemcpyDeviceToDevice, nullptr));
    const cudaLaunchConfig_t x = lineLaunch(ny, nz), y = lineLaunch(nx, nz), z = lineLaunch(nx, ny);
    cudaLaunchKernelEx(&x, kernHFilterX, in.data, out.data, nz, ny, nx, c, a);
    cudaLaunchKernelEx(&y, kernHFilterY, out.data, nz, ny, nx, c, a);
    cudaLaunchKernelEx(&z, kernHFilterZ, out.data, nz, ny, nx, c, a);
}

}  // namespace amnlm
