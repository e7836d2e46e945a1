#include "FindPositionMaxiamalIntensity.h"

#include <limits>
#include <type_traits>

#include "BlockRow.h"
#include "FoldEntries.h"
#include "RowReduction.h"
#include "lanes.h"

namespace zel::cuda {

namespace {

/// Of a column: as wide as a pixel, which SIMD wants of all that meets in a choice.
template <typename T>
using Position = std::conditional_t<sizeof(T) == sizeof(std::int32_t), std::int32_t, std::int64_t>;

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
        // Pixels compare as the doubles that they become. An infinity that nothing was found beyond is a record's
        // neutral value; beyond the other infinity there is nothing to find.
        constexpr T infinity = std::numeric_limits<T>::infinity();
        auto minimum = lane.fill(infinity), maximum = lane.fill(-infinity);
        auto position = lane.fill(Position<T>{0});
        lane.eachColumn(width, [&](unsigned int i, std::uint64_t x) {
            const T value = row[x], low = minimum[i], high = maximum[i];
            // Positions ascend, so the largest one is the one taken last.
            const Position<T> last = position[i], taken = value > high ? static_cast<Position<T>>(x) : 0;
            position[i] = taken > last ? taken : last;
            minimum[i] = choose(value < low, value, low);
            maximum[i] = choose(value > high, value, high);
        });
        lane.each([&](unsigned int i, unsigned int t) {
            const bool found = maximum[i] > -DBL_MAX;
            allSharedPositionInfo[t] = {found ? static_cast<std::uint64_t>(position[i]) : 0, found ? y : 0,
                                        minimum[i] < DBL_MAX ? minimum[i] : DBL_MAX, found ? maximum[i] : -DBL_MAX};
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
