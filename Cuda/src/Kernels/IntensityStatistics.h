#pragma once

#include <cuda_runtime.h>

#include <cfloat>
#include <cstdint>

#include "lanes/LaneShared.h"

namespace zel::cuda {

/// Statistics of a set of pixels; the same layout in host and device memory. It starts neutral. While a kernel gathers
/// them, the fields for mean and standard deviation hold the sum of the values and of their squares.
struct IntensityStatisticsInfo {
    std::uint64_t count = 0;
    double minimum = DBL_MAX;
    double maximum = -DBL_MAX;
    double mean = 0;
    double standardDeviation = 0;  ///< of the population, sqrt(sum of squares / count - mean^2)
};

/// Counts the pixels of a volume and gives their extrema, mean and standard deviation, gathered in double in a fixed
/// order. With weights only pixels of a weight above 0 count, and their value is weight times pixel. Where none counts,
/// the extrema stay neutral, and mean and deviation are NaN. So is a deviation whose variance came out below 0 by
/// rounding. Instances: float and double.
///
/// @param image    device memory, `depth` slices of `height` rows of `width` pixels, at least one of each; pitches in
///                 bytes.
/// @param weights  shaped like it with pitches of its own; may be null.
/// @param info     host memory.
/// @param stream   queues here; the call waits for all work of the device.
/// @throws RuntimeError when device memory runs out or a call is refused; none is left, and the record is then neutral,
///         or what a failed copy of the result left.
template <typename T>
void cumulateIntensities(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, const T* weights,
                         std::uint64_t weightsPitch, std::uint64_t weightsSlicePitch, std::uint64_t width,
                         std::uint64_t height, std::uint64_t depth, IntensityStatisticsInfo* info, cudaStream_t stream);

/// Launched as RowReduction.h says, on a grid of `height` by `depth` blocks. Instances: the eight real types, each
/// with weights of float and of double.
template <typename T, typename U>
__global__ void cumulateIntensitiesKernel(const T* image, unsigned long long pitch, unsigned long long slicePitch,
                                          const U* weights, unsigned long long weightsPitch,
                                          unsigned long long weightsSlicePitch, unsigned long long width,
                                          unsigned long long height, unsigned long long depth,
                                          LaneShared<IntensityStatisticsInfo>* entries, unsigned int* counter);

}  // namespace zel::cuda
