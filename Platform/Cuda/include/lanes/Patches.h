#pragma once

#include <cuda_runtime.h>

// Words for kernels that read the neighbourhood of each voxel.
namespace zel::cuda {

inline constexpr int maxPeriodicReach = 32;

template <class Bundle>
class PeriodicRow {
public:
    __device__ __forceinline__ PeriodicRow(const Bundle&, const float* row, int x, int length, int)
        : row_(row), x_(x), length_(length) {}
    __device__ __forceinline__ float operator()(unsigned int, int dx) const {
        const int place = (x_ + dx) % length_;
        return row_[place < 0 ? place + length_ : place];
    }

private:
    const float* row_;
    int x_;
    int length_;
};

inline constexpr int maxTabulated = 1024;

template <class Function>
class Tabulated {
public:
    __device__ __forceinline__ Tabulated(int, Function function) : function_(function) {}
    __device__ __forceinline__ float operator()(int i) const { return function_(i); }

private:
    Function function_;
};

}  // namespace zel::cuda
