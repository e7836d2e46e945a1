#include "FindPositionMaxiamalIntensity.h"

#include "BlockRow.h"
#include "FoldEntries.h"
#include "RowReduction.h"
#include "lanes.h"

namespace zel::cuda {

namespace {

struct PositionRules {
    template <typename To, typename From>
    static __device__ __forceinline__ void set(To& to, const From& from) {
        to.positionX = from.positionX;
        to.positionY = from.positionY;
        to.minimum = from.minimum;
        to.maximum = from.maximum;
    }
    template <typename From>
    static __device__ __forceinline__ void fold(PositionMaximalIntensityInfo& into, const From& from) {
        if (from.minimum < into.minimum) into.minimum = from.minimum;
        if (from.maximum > into.maximum) {
            into.maximum = from.maximum;
            into.positionX = from.positionX;
            into.positionY = from.positionY;
        }
    }
    static __device__ __forceinline__ bool isEmpty(const PositionMaximalIntensityInfo&) { return false; }
};

}  // namespace

template <typename T>
__global__ void findPositionMaximalIntensityKernel(const T* image, unsigned long long pitch, unsigned long long width,
                                                   unsigned long long,
                                                   LaneShared<PositionMaximalIntensityInfo>* entries,
                                                   unsigned int* counter) {
    auto* const allSharedPositionInfo = dynamicShared<PositionMaximalIntensityInfo>();
    const T* const row = blockRow(image, pitch);
    const std::uint64_t y = blockIdx.x;
    forEachLane([=](const auto lane) {
        auto minimum = lane.fill(DBL_MAX), maximum = lane.fill(-DBL_MAX);
        auto position = lane.fill(std::int64_t{-1});
        lane.eachColumn(width, [&](unsigned int i, std::uint64_t x) {
            const double value = row[x];
            // Positions ascend, so the maximum of them keeps the last one taken: SIMD likes that better than a choice.
            const std::int64_t taken = value > maximum[i] ? static_cast<std::int64_t>(x) : -1;
            position[i] = taken > position[i] ? taken : position[i];
            minimum[i] = value < minimum[i] ? value : minimum[i];
            maximum[i] = value > maximum[i] ? value : maximum[i];
        });
        lane.each([&](unsigned int i, unsigned int t) {
            const bool any = position[i] >= 0;
            allSharedPositionInfo[t] = {any ? static_cast<std::uint64_t>(position[i]) : 0, any ? y : 0, minimum[i],
                                        maximum[i]};
        });
    });
    foldEntries<PositionRules>(allSharedPositionInfo, entries, counter);
}

template <typename T>
void findPositionMaximalIntensity(const T* image, std::uint64_t pitch, std::uint64_t width, std::uint64_t height,
                                  PositionMaximalIntensityInfo* info, cudaStream_t stream) {
    *info = {};
    reduceRows(dim3(static_cast<unsigned int>(height), 1, 1), width, info, stream,
               findPositionMaximalIntensityKernel<T>, image, pitch, width, height);
}

#define LAUNCHER(T)                                                                                   \
    template void findPositionMaximalIntensity(const T*, std::uint64_t, std::uint64_t, std::uint64_t, \
                                               PositionMaximalIntensityInfo*, cudaStream_t);
LAUNCHER(float)
LAUNCHER(double)
#undef LAUNCHER

}  // namespace zel::cuda
