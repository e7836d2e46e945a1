#include "CudaAmnlmDataOps.h"

#include <thrust/functional.h>
#include <thrust/transform.h>

#include <cstdint>
#include <utility>

#include "CudaUtils_CUDA.h"
#include "ThrustPolicy.h"
#include "VoxelLaunch.h"
#include "lanes.h"

namespace amnlm {

using namespace zel::cuda;

/// x / y where y is above the limit, else 0. NaN is not above it.
template <typename T>
struct rdivides {
    __host__ __device__ T operator()(T x, T y) const {
        constexpr T limit = 1.1920929e-07f;
        return y > limit ? x / y : T{0};
    }
};

template <typename T>
struct maskdata {
    __device__ T operator()(T x, bool mask) const { return keepIf(mask, x); }
};

__global__ void kernAddProduct(float* sum, const float* a, const float* b, int nx, int ny, int nz) {
    forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
        const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
        sum[v] += a[v] * b[v];
    });
}

__global__ void kernConcat(float* out, const float* a, const float* b, int nx, int ny, int nz, int ca, int cb) {
    withChannels(ca, [=](const auto channelsA) {
        withChannels(cb, [=](const auto channelsB) {
            forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
                const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
                float* const voxel = out + v * (channelsA + channelsB);
                for (int k = 0; k < channelsA; ++k) voxel[k] = a[v * channelsA + k];
                for (int k = 0; k < channelsB; ++k) voxel[channelsA + k] = b[v * channelsB + k];
            });
        });
    });
}

__global__ void kernExtract(float* out, const float* in, int nx, int ny, int nz, int c, int first, int last) {
    withChannels(c, [=](const auto channels) {
        withChannels(last - first, [=](const auto taken) {
            forEachVoxel(nx, ny, nz, [=](int x, int y, int z) {
                const std::int64_t v = (std::int64_t{z} * ny + y) * nx + x;
                for (int k = 0; k < taken; ++k) out[v * taken + k] = in[v * channels + first + k];
            });
        });
    });
}

/// A position between two samples of an axis: the share of the first, and that of the one behind it.
struct AxisPosition {
    int index;
    float here;
    float next;

    __device__ __forceinline__ AxisPosition(int position, float scale) {
        const float exact = static_cast<float>(position) * scale;
        const float floor = floorf(exact);
        index = static_cast<int>(floor);
        next = exact - floor;
        here = 1 - next;
    }

    __device__ __forceinline__ float between(float first, float second) const { return here * first + next * second; }
};

/// Takes the elements of a bundle, of a row of `nx` voxels that goes on with zeros, out of rows of `in`.
template <typename Bundle, typename Channels>
class RowSampler {
public:
    using Values = decltype(std::declval<const Bundle&>().fill(0.0f));

    __device__ __forceinline__ RowSampler(const Bundle& bundle, Channels channels, float scale, int nx)
        : bundle_(bundle),
          channels_(channels),
          base_(AxisPosition(static_cast<int>(bundle.first / channels), scale).index),
          offset_(bundle.fill(0)),
          here_(bundle.fill(0.0f)),
          next_(bundle.fill(0.0f)) {
        last_ = static_cast<int>((nx - 1 - base_) * channels);
        bundle.each([&](unsigned int lane) {
            const std::uint64_t element = bundle.first + lane;
            const AxisPosition position(static_cast<int>(element / channels), scale);
            offset_[lane] = static_cast<int>((position.index - base_) * channels + element % channels);
            here_[lane] = position.here;
            next_[lane] = position.next;
        });
    }

    /// @param row  null for one beyond the image, which is 0.
    __device__ __forceinline__ Values operator()(const float* row) const {
        Values values = bundle_.fill(0.0f);
        if (row == nullptr) return values;
        const float* const samples = row + base_ * channels_;
        bundle_.each([&](unsigned int lane) {
            const bool hasNext = offset_[lane] < last_;
            const float next = keepIf(hasNext, samples[offset_[lane] + (hasNext ? static_cast<int>(channels_) : 0)]);
            values[lane] = here_[lane] * samples[offset_[lane]] + next_[lane] * next;
        });
        return values;
    }

private:
    Bundle bundle_;
    Channels channels_;
    std::int64_t base_;  ///< voxel of the row that offsets count from
    int last_;           ///< offset of the row's last voxel
    decltype(std::declval<const Bundle&>().fill(0)) offset_;
    Values here_;
    Values next_;
};

__global__ void kernPatchSpaceScale(float* out, int onx, int ony, int onz, const float* in, int inx, int iny, int inz,
                                    int channelCount, float sx, float sy, float sz) {
    withChannels(channelCount, [=](const auto channels) {
        forEachVoxelColumn(onx, ony, onz, channels, [=](const auto bundle, int yBegin, int yEnd, int z) {
            const RowSampler sampler(bundle, channels, sx, inx);
            const AxisPosition atZ(z, sz);
            const auto sampled = [&](int y, int dz) {
                const std::int64_t plane = atZ.index + dz;
                const bool inside = y < iny && plane < inz;
                return sampler(inside ? in + (plane * iny + y) * inx * channels : nullptr);
            };
            int row = -1;  // the first of the rows of `in` that the four are samples of
            auto a = bundle.fill(0.0f), b = a, c = a, d = a;
            for (int y = yBegin; y < yEnd; ++y) {
                const AxisPosition atY(y, sy);
                if (row < 0 || atY.index != row) {
                    const bool isNext = row >= 0 && atY.index == row + 1;
                    a = isNext ? b : sampled(atY.index, 0);
                    c = isNext ? d : sampled(atY.index, 1);
                    b = sampled(atY.index + 1, 0);
                    d = sampled(atY.index + 1, 1);
                    row = atY.index;
                }
                float* const target = out + (std::int64_t{z} * ony + y) * onx * channels + bundle.first;
                bundle.each([&](unsigned int lane) {
                    target[lane] = atZ.between(atY.between(a[lane], b[lane]), atY.between(c[lane], d[lane]));
                });
            }
        });
    });
}

namespace {

template <typename Second, typename Operation>
void transformData(const RkCUDAAMNLMData& a, Second b, RkCUDAAMNLMData& out, Operation operation) {
    if (a.elementCount() == 0) return;
    const auto first = thrust::device_pointer_cast(static_cast<const float*>(a.data));
    thrust::transform(thrustPolicy, first, first + static_cast<std::int64_t>(a.elementCount()), b,
                      thrust::device_pointer_cast(out.data), operation);
}

thrust::device_ptr<const float> elements(const RkCUDAAMNLMData& data) {
    return thrust::device_pointer_cast(static_cast<const float*>(data.data));
}

/// Distance in input samples between two output samples, where first falls on first and last on last.
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

void addProductData(const RkCUDAAMNLMData& a, const RkCUDAAMNLMData& b, RkCUDAAMNLMData& sum) {
    const auto [nz, ny, nx, channels] = sum.dims;
    const cudaLaunchConfig_t config = voxelLaunch(nx, ny, nz);
    cudaLaunchKernelEx(&config, kernAddProduct, sum.data, a.data, b.data, nx * channels, ny, nz);
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

void exchangeData(RkCUDAAMNLMData& a, RkCUDAAMNLMData& b) {
    std::swap(a.data, b.data);
}

void scaleData(RkCUDAAMNLMData&& in, RkCUDAAMNLMData& out) {
    if (haveEqualExtents(in, out))
        exchangeData(in, out);
    else
        scaleData(std::as_const(in), out);
}

void scaleData(const RkCUDAAMNLMData& in, RkCUDAAMNLMData& out) {
    const int inx = in.dims[2], iny = in.dims[1], inz = in.dims[0];
    const int onx = out.dims[2], ony = out.dims[1], onz = out.dims[0];
    if (haveEqualExtents(in, out)) {
        checkCudaFatal(cudaMemcpy(out.data, in.data, out.byteSize(), cudaMemcpyDeviceToDevice));
        return;
    }
    const cudaLaunchConfig_t config = voxelLaunch(onx, ony, onz);
    cudaLaunchKernelEx(&config, kernPatchSpaceScale, out.data, onx, ony, onz, in.data, inx, iny, inz, in.dims[3],
                       axisScale(inx, onx), axisScale(iny, ony), axisScale(inz, onz));
}

}  // namespace amnlm
