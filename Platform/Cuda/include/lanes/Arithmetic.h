#pragma once

#include <cuda_runtime.h>

#include <cmath>

// What lanes compute with where the C library would be called for each lane alone.
namespace zel::cuda {

__device__ __forceinline__ float laneExp(float x) {
    return expf(x);
}

class FixedBasePower {
public:
    __device__ __forceinline__ explicit FixedBasePower(float base) : base_(base) {}
    __device__ __forceinline__ float operator()(float exponent) const { return powf(base_, exponent); }

private:
    float base_;
};

__device__ __forceinline__ float keepIf(bool keep, float value) {
    return keep ? value : 0.0f;
}

template <class T>
__device__ __forceinline__ T choose(bool first, T a, T b) {
    return first ? a : b;
}

}  // namespace zel::cuda
