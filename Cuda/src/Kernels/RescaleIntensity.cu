#include "RescaleIntensity.h"

#include <cmath>
#include <type_traits>

#include "BlockRow.h"
#include "RowLaunch.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"

namespace zel::cuda {

namespace {

/// Takes a pixel from one range to another.
struct LinearMap {
    double factor, offset;

    __device__ LinearMap(double inMin, double inMax, double outMin, double outMax)
        : factor((outMax - outMin) / (inMax - inMin)), offset(outMin - factor * inMin) {}
    __device__ __forceinline__ double operator()(double pixel) const { return fma(factor, pixel, offset); }
};

}  // namespace

template <typename T>
__global__ void rescaleIntensity2dKernel(const T* in, unsigned long long inPitch, T* out, unsigned long long outPitch,
                                         unsigned long long width, double inMin, double inMax, double outMin,
                                         double outMax) {
    const T* const inRow = blockRow(in, inPitch);
    T* const outRow = blockRow(out, outPitch);
    const LinearMap map(inMin, inMax, outMin, outMax);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = static_cast<T>(map(inRow[x])); });
}

template <typename T>
__global__ void rescaleIntensity2dInsituKernel(T* image, unsigned long long pitch, unsigned long long width,
                                               double inMin, double inMax, double outMin, double outMax) {
    T* const row = blockRow(image, pitch);
    const LinearMap map(inMin, inMax, outMin, outMax);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = static_cast<T>(map(row[x])); });
}

template <typename From, typename To>
__global__ void rescaleIntensityAndConvert2dKernel(const From* in, unsigned long long inPitch, To* out,
                                                   unsigned long long outPitch, unsigned long long width, double inMin,
                                                   double inMax, double outMin, double outMax) {
    const From* const inRow = blockRow(in, inPitch);
    To* const outRow = blockRow(out, outPitch);
    const LinearMap map(inMin, inMax, outMin, outMax);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = static_cast<To>(map(inRow[x])); });
}

template <typename T>
void rescaleIntensity(const T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, float* out,
                      std::uint64_t outPitch, std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                      std::uint64_t depth, double inMin, double inMax, double outMin, double outMax,
                      cudaStream_t stream) {
    if (inMax - inMin == 0) inMax += 1;
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const T* const inSlice = offsetBytes(in, z * inSlicePitch);
        float* const outSlice = offsetBytes(out, z * outSlicePitch);
        if constexpr (std::is_same_v<T, double>) {
            cudaLaunchKernelEx(&config, rescaleIntensityAndConvert2dKernel<double, float>, inSlice, inPitch, outSlice,
                               outPitch, width, inMin, inMax, outMin, outMax);
        } else if (inSlice == outSlice) {
            cudaLaunchKernelEx(&config, rescaleIntensity2dInsituKernel<float>, outSlice, inPitch, width, inMin, inMax,
                               outMin, outMax);
        } else {
            cudaLaunchKernelEx(&config, rescaleIntensity2dKernel<float>, inSlice, inPitch, outSlice, outPitch, width,
                               inMin, inMax, outMin, outMax);
        }
    });
}

#define LAUNCHER(T)                                                                                              \
    template void rescaleIntensity(const T*, std::uint64_t, std::uint64_t, float*, std::uint64_t, std::uint64_t, \
                                   std::uint64_t, std::uint64_t, std::uint64_t, double, double, double, double,  \
                                   cudaStream_t);
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

// No launcher reaches these.
template __global__ void rescaleIntensity2dKernel(const double*, unsigned long long, double*, unsigned long long,
                                                  unsigned long long, double, double, double, double);
template __global__ void rescaleIntensity2dInsituKernel(double*, unsigned long long, unsigned long long, double, double,
                                                        double, double);

}  // namespace zel::cuda
