#include "MeanIntensity.h"

#include "BlockRow.h"
#include "FoldEntries.h"
#include "RowReduction.h"
#include "lanes.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

namespace {

struct SumRules {
    template <typename To>
    static __device__ __forceinline__ void set(To& to, double from) {
        to = from;
    }
    static __device__ __forceinline__ void fold(double& into, double from) { into += from; }
    static __device__ __forceinline__ bool isEmpty(double) { return false; }
};

}  // namespace

template <typename T>
__global__ void cumulateIntensitiesKernel(const T* image, unsigned long long pitch, unsigned long long width,
                                          unsigned long long, LaneShared<double>* entries, unsigned int* counter) {
    double* const allSharedSum = dynamicShared<double>();
    const T* const row = blockRow(image, pitch);
    forEachLane([=](const auto lane) {
        auto sum = lane.fill(0.0);
        lane.eachColumn(width, [&](unsigned int i, std::uint64_t x) { sum[i] += static_cast<double>(row[x]); });
        lane.each([&](unsigned int i, unsigned int t) { allSharedSum[t] = sum[i]; });
    });
    foldEntries<SumRules>(allSharedSum, entries, counter);
}

template <typename T>
void meanIntensity(const T* image, std::uint64_t pitch, std::uint64_t width, std::uint64_t height, double* mean,
                   cudaStream_t stream) {
    *mean = 0;
    reduceRows(dim3(static_cast<unsigned int>(height), 1, 1), width, mean, stream, cumulateIntensitiesKernel<T>, image,
               pitch, width, height);
    *mean /= static_cast<double>(width) * static_cast<double>(height);
}

#define LAUNCHER(NAME, CODE, T) \
    template void meanIntensity(const T*, std::uint64_t, std::uint64_t, std::uint64_t, double*, cudaStream_t);
ZEL_FOR_EACH_KERNEL_TYPE(LAUNCHER)
#undef LAUNCHER

}  // namespace zel::cuda
