#pragma once

#include <cuda_runtime.h>

namespace zel::cuda {

// Which pixels are replaced: those for which the comparison with a value holds. NaN holds for "not equal" only.

template <typename T>
struct ComparisonCriterionOperator_Equal_to {
    __device__ __forceinline__ bool operator()(T pixel, T value) const { return pixel == value; }
};
template <typename T>
struct ComparisonCriterionOperator_Not_equal_to {
    __device__ __forceinline__ bool operator()(T pixel, T value) const { return pixel != value; }
};
template <typename T>
struct ComparisonCriterionOperator_Less_than {
    __device__ __forceinline__ bool operator()(T pixel, T value) const { return pixel < value; }
};
template <typename T>
struct ComparisonCriterionOperator_Less_than_or_equal_to {
    __device__ __forceinline__ bool operator()(T pixel, T value) const { return pixel <= value; }
};
template <typename T>
struct ComparisonCriterionOperator_Greater_than {
    __device__ __forceinline__ bool operator()(T pixel, T value) const { return pixel > value; }
};
template <typename T>
struct ComparisonCriterionOperator_Greater_than_or_equal_to {
    __device__ __forceinline__ bool operator()(T pixel, T value) const { return pixel >= value; }
};

/// Replaces, in place, the pixels for which Op holds against `value`. One slice, launched as RowLaunch.h says; no
/// launcher reaches it. Instances: each operator above of each of the eight real types.
template <typename Op, typename T>
__global__ void replaceByCriterion2dKernel(T* image, unsigned long long pitch, T value, T replacement,
                                           unsigned long long width);

}  // namespace zel::cuda
