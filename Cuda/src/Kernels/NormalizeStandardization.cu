#include "NormalizeStandardization.h"

#include <cmath>

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

namespace {

template <typename To, typename From>
__device__ __forceinline__ To standardized(From pixel, double mean, double deviation) {
    return static_cast<To>((static_cast<double>(pixel) - mean) / deviation);
}

/// By what surrounds the pixel.
template <typename T>
__device__ __forceinline__ T standardizedLocally(T pixel, T mean, T meanSquare) {
    constexpr double smallestVariance = 1e-12;
    constexpr double smallestDeviation = 1e-6;
    const auto variance = static_cast<double>(meanSquare - mean * mean);
    const double deviation = variance < smallestVariance ? smallestDeviation : std::sqrt(variance);
    return standardized<T>(pixel, mean, deviation);
}

}  // namespace

template <typename T>
__global__ void standardization2dKernel(const T* in, unsigned long long inPitch, T* out, unsigned long long outPitch,
                                        unsigned long long width, double mean, double deviation) {
    const T* const inRow = blockRow(in, inPitch);
    T* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = standardized<T>(inRow[x], mean, deviation); });
}

template <typename T>
__global__ void standardization2dInsituKernel(T* image, unsigned long long pitch, unsigned long long width, double mean,
                                              double deviation) {
    T* const row = blockRow(image, pitch);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = standardized<T>(row[x], mean, deviation); });
}

template <typename T>
__global__ void standardization2dKernel(const T* in, unsigned long long inPitch, const T* means,
                                        unsigned long long meansPitch, const T* meanSquares,
                                        unsigned long long meanSquaresPitch, T* out, unsigned long long outPitch,
                                        unsigned long long width) {
    const T* const inRow = blockRow(in, inPitch);
    const T* const meanRow = blockRow(means, meansPitch);
    const T* const squareRow = blockRow(meanSquares, meanSquaresPitch);
    T* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = standardizedLocally(inRow[x], meanRow[x], squareRow[x]); });
}

template <typename T>
__global__ void standardization2dInsituKernel(T* image, unsigned long long pitch, const T* means,
                                              unsigned long long meansPitch, const T* meanSquares,
                                              unsigned long long meanSquaresPitch, unsigned long long width) {
    T* const row = blockRow(image, pitch);
    const T* const meanRow = blockRow(means, meansPitch);
    const T* const squareRow = blockRow(meanSquares, meanSquaresPitch);
    forEachColumn(width, [=](std::uint64_t x) { row[x] = standardizedLocally(row[x], meanRow[x], squareRow[x]); });
}

template <typename From, typename To>
__global__ void normalizeAndConvert2dKernel(const From* in, unsigned long long inPitch, To* out,
                                            unsigned long long outPitch, unsigned long long width, double mean,
                                            double deviation) {
    const From* const inRow = blockRow(in, inPitch);
    To* const outRow = blockRow(out, outPitch);
    forEachColumn(width, [=](std::uint64_t x) { outRow[x] = standardized<To>(inRow[x], mean, deviation); });
}

template <typename T>
void standardization(const T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, T* out, std::uint64_t outPitch,
                     std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height, std::uint64_t depth,
                     double mean, double deviation, cudaStream_t stream) {
    // Each name has two forms: these are the ones with scalars.
    void (*const plain)(const T*, unsigned long long, T*, unsigned long long, unsigned long long, double, double) =
        standardization2dKernel<T>;
    void (*const insitu)(T*, unsigned long long, unsigned long long, double, double) = standardization2dInsituKernel<T>;
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        const T* const inSlice = offsetBytes(in, z * inSlicePitch);
        T* const outSlice = offsetBytes(out, z * outSlicePitch);
        if (outSlice == inSlice)
            cudaLaunchKernelEx(&config, insitu, outSlice, inPitch, width, mean, deviation);
        else
            cudaLaunchKernelEx(&config, plain, inSlice, inPitch, outSlice, outPitch, width, mean, deviation);
    });
}

#define INSTANCES(T)                                                                                             \
    template __global__ void standardization2dKernel(const T*, unsigned long long, const T*, unsigned long long, \
                                                     const T*, unsigned long long, T*, unsigned long long,       \
                                                     unsigned long long);                                        \
    template __global__ void standardization2dInsituKernel(T*, unsigned long long, const T*, unsigned long long, \
                                                           const T*, unsigned long long, unsigned long long);    \
    template void standardization(const T*, std::uint64_t, std::uint64_t, T*, std::uint64_t, std::uint64_t,      \
                                  std::uint64_t, std::uint64_t, std::uint64_t, double, double, cudaStream_t);
INSTANCES(float)
INSTANCES(double)
#undef INSTANCES
template __global__ void normalizeAndConvert2dKernel(const double*, unsigned long long, float*, unsigned long long,
                                                     unsigned long long, double, double);

}  // namespace zel::cuda
