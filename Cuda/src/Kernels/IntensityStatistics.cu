#include "IntensityStatistics.h"

#include <cmath>
#include <limits>

#include "FoldEntries.h"
#include "RowReduction.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

namespace {

struct StatisticsRules {
    template <typename To, typename From>
    static __device__ __forceinline__ void set(To& to, const From& from) {
        to.count = from.count;
        to.minimum = from.minimum;
        to.maximum = from.maximum;
        to.mean = from.mean;
        to.standardDeviation = from.standardDeviation;
    }
    template <typename From>
    static __device__ __forceinline__ void fold(IntensityStatisticsInfo& into, const From& from) {
        if (from.count == 0) return;
        if (into.count == 0) return set(into, from);
        into.count += from.count;
        into.mean += from.mean;
        into.standardDeviation += from.standardDeviation;
        if (from.maximum > into.maximum) into.maximum = from.maximum;
        if (from.minimum < into.minimum) into.minimum = from.minimum;
    }
    static __device__ __forceinline__ bool isEmpty(const IntensityStatisticsInfo& info) { return info.count == 0; }
};

/// Pixels are never beyond these.
template <typename T, typename Limits = std::numeric_limits<T>>
constexpr T highest = Limits::has_infinity ? Limits::infinity() : Limits::max();
template <typename T, typename Limits = std::numeric_limits<T>>
constexpr T lowest = Limits::has_infinity ? -Limits::infinity() : Limits::lowest();

}  // namespace

template <typename T, typename U>
__global__ void cumulateIntensitiesKernel(const T* image, unsigned long long pitch, unsigned long long slicePitch,
                                          const U* weights, unsigned long long weightsPitch,
                                          unsigned long long weightsSlicePitch, unsigned long long width,
                                          unsigned long long, unsigned long long,
                                          LaneShared<IntensityStatisticsInfo>* entries, unsigned int* counter) {
    auto* const allSharedPartialStatistics = dynamicShared<IntensityStatisticsInfo>();
    const T* const row = offsetBytes(image, pitch * blockIdx.x + slicePitch * blockIdx.y);
    const U* const weightRow = offsetBytes(weights, weightsPitch * blockIdx.x + weightsSlicePitch * blockIdx.y);
    const bool weighted = weights != nullptr;
    forEachLane([=](const auto lane) {
        auto sum = lane.fill(0.0), squares = sum;
        const auto add = [&](unsigned int i, double value) {
            sum[i] += value;
            squares[i] = std::fma(value, value, squares[i]);
        };
        if (weighted) {
            auto count = lane.fill(std::uint64_t{0});
            auto minimum = lane.fill(DBL_MAX), maximum = lane.fill(-DBL_MAX);
            lane.eachColumn(width, [&](unsigned int i, std::uint64_t x) {
                const double weight = weightRow[x];  // exact, so it compares as in its own type
                const double product = weight * static_cast<double>(row[x]);
                const bool counts = weight > 0;
                // What does not count is added as 0 and compared as the neutral extrema: vector code is faster so than
                // with a branch.
                const double value = counts ? product : 0.0;
                const double low = counts ? product : DBL_MAX, high = counts ? product : -DBL_MAX;
                count[i] += counts ? 1 : 0;
                add(i, value);
                minimum[i] = low < minimum[i] ? low : minimum[i];
                maximum[i] = high > maximum[i] ? high : maximum[i];
            });
            lane.each([&](unsigned int i, unsigned int t) {
                allSharedPartialStatistics[t] = {count[i], minimum[i], maximum[i], sum[i], squares[i]};
            });
        } else {
            auto minimum = lane.fill(highest<T>), maximum = lane.fill(lowest<T>);
            lane.eachColumn(width, [&](unsigned int i, std::uint64_t x) {
                const T value = row[x], low = minimum[i], high = maximum[i];
                add(i, static_cast<double>(value));
                minimum[i] = value < low ? value : low;
                maximum[i] = value > high ? value : high;
            });
            lane.each([&](unsigned int i, unsigned int t) {
                const double low = minimum[i], high = maximum[i];
                allSharedPartialStatistics[t] = {(width + blockDim.x - 1 - t) / blockDim.x,
                                                 low < DBL_MAX ? low : DBL_MAX, high > -DBL_MAX ? high : -DBL_MAX,
                                                 sum[i], squares[i]};
            });
        }
    });
    foldEntries<StatisticsRules>(allSharedPartialStatistics, entries, counter);
}

template <typename T>
void cumulateIntensities(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, const T* weights,
                         std::uint64_t weightsPitch, std::uint64_t weightsSlicePitch, std::uint64_t width,
                         std::uint64_t height, std::uint64_t depth, IntensityStatisticsInfo* info,
                         cudaStream_t stream) {
    *info = {};
    const dim3 rows(static_cast<unsigned int>(height), static_cast<unsigned int>(depth), 1);
    reduceRows(rows, width, info, stream, cumulateIntensitiesKernel<T, T>, image, pitch, slicePitch, weights,
               weightsPitch, weightsSlicePitch, width, height, depth);
    const auto count = static_cast<double>(info->count);
    info->mean /= count;
    info->standardDeviation = std::sqrt(info->standardDeviation / count - info->mean * info->mean);
}

#define LAUNCHER(T)                                                                                                   \
    template void cumulateIntensities(const T*, std::uint64_t, std::uint64_t, const T*, std::uint64_t, std::uint64_t, \
                                      std::uint64_t, std::uint64_t, std::uint64_t, IntensityStatisticsInfo*,          \
                                      cudaStream_t);
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

#define KERNEL(T, U)                                                                                               \
    template __global__ void cumulateIntensitiesKernel(const T*, unsigned long long, unsigned long long, const U*, \
                                                       unsigned long long, unsigned long long, unsigned long long, \
                                                       unsigned long long, unsigned long long,                     \
                                                       LaneShared<IntensityStatisticsInfo>*, unsigned int*);
#define KERNELS(NAME, CODE, T) KERNEL(T, float) KERNEL(T, double)
ZEL_FOR_EACH_KERNEL_TYPE(KERNELS)
#undef KERNELS
#undef KERNEL

}  // namespace zel::cuda
