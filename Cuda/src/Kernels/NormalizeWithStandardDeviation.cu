#include "NormalizeWithStandardDeviation.h"

#include <cmath>
#include <type_traits>

#include "BlockRow.h"
#include "RowLaunch.h"
#include "lanes.h"

namespace zel::cuda {

namespace {

template <typename T>
__device__ __forceinline__ T normalized(T pixel, T mean, T meanSquare, T threshold, T replacement, T low, T high) {
    const T variance = (meanSquare > 0 ? meanSquare : T{0}) - mean * mean;
    const auto quotient = static_cast<T>(static_cast<double>(pixel) / std::sqrt(static_cast<double>(variance)));
    const T result = variance < threshold ? replacement : quotient;
    const T notBelow = result > low ? result : low;
    return notBelow < high ? notBelow : high;
}

}  // namespace

template <typename Tag, typename T>
__global__ void normalizeWithStandardDeviation2dKernel(T* in, unsigned long long inPitch, const T* means,
                                                       unsigned long long meansPitch, const T* meanSquares,
                                                       unsigned long long meanSquaresPitch, T threshold, T replacement,
                                                       T low, T high, T* out, unsigned long long outPitch,
                                                       unsigned long long width) {
    T* const inRow = blockRow(in, inPitch);
    T* const outRow = std::is_same_v<Tag, InsituTag> ? inRow : blockRow(out, outPitch);
    const T* const meanRow = blockRow(means, meansPitch);
    const T* const squareRow = blockRow(meanSquares, meanSquaresPitch);
    forEachColumn(width, [=](std::uint64_t x) {
        outRow[x] = normalized(inRow[x], meanRow[x], squareRow[x], threshold, replacement, low, high);
    });
}

template <typename T>
void normalizeWithStandardDeviation(T* in, std::uint64_t inPitch, std::uint64_t inSlicePitch, const T* means,
                                    std::uint64_t meansPitch, std::uint64_t meansSlicePitch, const T* meanSquares,
                                    std::uint64_t meanSquaresPitch, std::uint64_t meanSquaresSlicePitch, T threshold,
                                    T replacement, T low, T high, T* out, std::uint64_t outPitch,
                                    std::uint64_t outSlicePitch, std::uint64_t width, std::uint64_t height,
                                    std::uint64_t depth, cudaStream_t stream) {
    launchRowsPerSlice(height, depth, stream, [&](const cudaLaunchConfig_t& config, std::uint64_t z) {
        T* const inSlice = offsetBytes(in, z * inSlicePitch);
        T* const outSlice = offsetBytes(out, z * outSlicePitch);
        const auto kernel = outSlice == inSlice ? normalizeWithStandardDeviation2dKernel<InsituTag, T>
                                                : normalizeWithStandardDeviation2dKernel<NonInsituTag, T>;
        cudaLaunchKernelEx(&config, kernel, inSlice, inPitch, offsetBytes(means, z * meansSlicePitch), meansPitch,
                           offsetBytes(meanSquares, z * meanSquaresSlicePitch), meanSquaresPitch, threshold,
                           replacement, low, high, outSlice, outPitch, width);
    });
}

#define LAUNCHER(T)                                                                                                 \
    template void normalizeWithStandardDeviation(T*, std::uint64_t, std::uint64_t, const T*, std::uint64_t,         \
                                                 std::uint64_t, const T*, std::uint64_t, std::uint64_t, T, T, T, T, \
                                                 T*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,    \
                                                 std::uint64_t, cudaStream_t);
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

}  // namespace zel::cuda
