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

}  // namespace zel::cuda
