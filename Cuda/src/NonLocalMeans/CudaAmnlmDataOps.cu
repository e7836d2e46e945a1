#include "CudaAmnlmDataOps.h"

#include <thrust/functional.h>
#include <thrust/transform.h>

#include <cstdint>

#include "CudaUtils_CUDA.h"
#include "ThrustPolicy.h"
#include "VoxelLaunch.h"
#include "lanes.h"

namespace amnlm {

using zel::cuda::forEachVoxel;

/// x / y where y can be divided by, else 0. NaN is not above the limit.
template <typename T>
struct rdivides {
    __host__ __device__ T operator()(T x, T y) const {
        constexpr T limit = 1.1920929e-07f;
        return y > limit ? x / y : T{0};
    }
};

template <typename T>
struct maskdata {
    __host__ __device__ T operator()(T x, bool mask) const { return mask ? x : T{0}; }
};

/// Linear interpolation along one axis: the share of a sample, and that of the next one.
struct AxisPosition {
    int index;
    float next;
    float here;

    __device__ __forceinline__ AxisPosition(int position, float scale) {
        const float exact = static_cast<float>(position) * scale;
        const float floor = floorf(exact);
        index = static_cast<int>(floor);
        next = exact - floor;
        here = 1 - next;
    }

    __device__ __forceinline__ float between(float low, float high) const { return here * low + next * high; }
};

__global__ void kernConcat(float* out, const float* a, const float* b, int nx, int ny, int nz, int ca, int cb) {
    forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
        const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
        for (int c = 0; c < ca; ++c) out[v * (ca + cb) + c] = a[v * ca + c];
        for (int c = 0; c < cb; ++c) out[v * (ca + cb) + ca + c] = b[v * cb + c];
    });
}

__global__ void kernExtract(float* out, const float* in, int nx, int ny, int nz, int c, int first, int last) {
    forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
        const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
        for (int k = first; k < last; ++k) out[v * (last - first) + k - first] = in[v * c + k];
    });
}

__global__ void kernPatchSpaceScale(float* out, int onx, int ony, int onz, const float* in, int inx, int iny, int inz,
                                    int c, float sx, float sy, float sz) {
    forEachVoxel(onx, ony, onz, [=](int x, int y, int z) {
        const AxisPosition atX(x, sx), atY(y, sy), atZ(z, sz);
        float* const voxel = out + ((std::int64_t{z} * ony + y) * onx + x) * c;
        for (int k = 0; k < c; ++k) {
            const auto sample = [=](int dx, int dy, int dz) {
                const int ix = atX.index + dx, iy = atY.index + dy, iz = atZ.index + dz;
                if (ix >= inx || iy >= iny || iz >= inz) return 0.0f;
                return in[((std::int64_t{iz} * iny + iy) * inx + ix) * c + k];
            };
            const auto alongX = [=](int dy, int dz) { return atX.between(sample(0, dy, dz), sample(1, dy, dz)); };
            const auto alongY = [=](int dz) { return atY.between(alongX(0, dz), alongX(1, dz)); };
            voxel[k] = atZ.between(alongY(0), alongY(1));
        }
    });
}

namespace {

template <typename Second, typename Operation>
void transformData(const RkCUDAAMNLMData& a, Second b, RkCUDAAMNLMData& out, Operation operation) {
    if (a.elementCount() == 0) return;
    const auto first = thrust::device_pointer_cast(static_cast<const float*>(a.data));
    thrust::transform(zel::cuda::thrustPolicy, first, first + static_cast<std::int64_t>(a.elementCount()), b,
                      thrust::device_pointer_cast(out.data), operation);
}

thrust::device_ptr<const float> elements(const RkCUDAAMNLMData& data) {
    return thrust::device_pointer_cast(static_cast<const float*>(data.data));
}

/// The step on `from` samples for one on `to`, first on first and last on last.
float axisScale(int from, int to) {
    return to < 2 ? 0.0f : static_cast<float>(from - 1) / static_cast<float>(to - 1);
}

}  // namespace

void subtractData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out) {
    transformData(a, elements(b), out, thrust::minus<float>());
}

void multiplyData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out) {
    transformData(a, elements(b), out, thrust::multiplies<float>());
}

void addData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out) {
    transformData(a, elements(b), out, thrust::plus<float>());
}

void divideData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out) {
    transformData(a, elements(b), out, rdivides<float>());
}

void maskData(const RkCUDAAMNLMData& a, const DeviceVector<bool>& mask, RkCUDAAMNLMData& out) {
    transformData(a, mask.begin(), out, maskdata<float>());
}

void concatData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& out) {
    const int nx = out.dims[2], ny = out.dims[1], nz = out.dims[0];
    const cudaLaunchConfig_t config = voxelLaunch(nx, ny, nz);
    cudaLaunchKernelEx(&config, kernConcat, out.data, a.data, b.data, nx, ny, nz, a.dims[3], b.dims[3]);
}

void extractData(const RkCUDAAMNLMData& in, std::int32_t first, std::int32_t last, RkCUDAAMNLMData& out) {
    const int nx = out.dims[2], ny = out.dims[1], nz = out.dims[0];
    const cudaLaunchConfig_t config = voxelLaunch(nx, ny, nz);
    cudaLaunchKernelEx(&config, kernExtract, out.data, in.data, nx, ny, nz, in.dims[3], first, last);
}

void scaleData(const RkCUDAAMNLMData& in, RkCUDAAMNLMData& out) {
    const int inx = in.dims[2], iny = in.dims[1], inz = in.dims[0];
    const int onx = out.dims[2], ony = out.dims[1], onz = out.dims[0];
    if (inx == onx && iny == ony && inz == onz) {
        checkCudaFatal(cudaMemcpy(out.data, in.data, out.byteSize(), cudaMemcpyDeviceToDevice));
        return;
    }
    const cudaLaunchConfig_t config = voxelLaunch(onx, ony, onz);
    cudaLaunchKernelEx(&config, kernPatchSpaceScale, out.data, onx, ony, onz, in.data, inx, iny, inz, in.dims[3],
                       axisScale(inx, onx), axisScale(iny, ony), axisScale(inz, onz));
}

}  // namespace amnlm
