#pragma once

#include <cuda_runtime.h>

#include <cstdint>
#include <cstring>

// Words for kernels that read the neighbourhood of each voxel.
namespace zel::cuda {

/// The largest reach of a PeriodicRow.
inline constexpr int maxPeriodicReach = 32;

/// What adjacent voxels, a bundle, see of a row that goes on from its other end: row(lane, dx) is the value dx voxels
/// to the right of the lane's voxel, -reach <= dx <= reach. Copied out, so that each shift is a plain load.
template <class Bundle>
class PeriodicRow {
public:
    /// @param x       the first lane's place in the row.
    /// @param length  of the row; any, 1 too.
    __forceinline__ PeriodicRow(const Bundle& bundle, const float* row, int x, int length, int reach) : reach_(reach) {
        const int count = static_cast<int>(bundle.lanes) + 2 * reach;
        const int first = x - reach;
        if (first >= 0 && first + count <= length)
            std::memcpy(values_, row + first, static_cast<std::size_t>(count) * sizeof(float));
        else
            copyWrapped(row, first, length, count);
    }
    __forceinline__ float operator()(unsigned int lane, int dx) const {
        return values_[static_cast<int>(lane) + dx + reach_];
    }

private:
    void copyWrapped(const float* row, int first, int length, int count) {
        int k = first % length;
        if (k < 0) k += length;
        for (int i = 0; i < count; ++i) {
            values_[i] = row[k];
            if (++k == length) k = 0;
        }
    }

    int reach_;
    float values_[Bundle::capacity + 2 * maxPeriodicReach];
};

/// The most values of a Tabulated.
inline constexpr int maxTabulated = 1024;

/// function(i) for i = 0 ... count - 1, the same for all items of a kernel: worked out in advance, which is for a
/// kernel to do before its words. On a GPU, whose threads have no room for tables, it is worked out when asked for.
template <class Function>
class Tabulated {
public:
    __forceinline__ Tabulated(int count, Function function) {
        for (int i = 0; i < count; ++i) values_[i] = function(i);
    }
    __forceinline__ float operator()(int i) const { return values_[i]; }

private:
    float values_[maxTabulated];
};

}  // namespace zel::cuda
