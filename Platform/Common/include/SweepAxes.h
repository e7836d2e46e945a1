#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// The lines along one axis (0 is x) of an image whose voxel (x, y, z) has the number (z * ny + y) * nx + x and its
/// channels side by side. A line is told by its place among its neighbours (along x, or y for lines along x) and by
/// its layer (the axis that is left).
template <int axis>
struct SweepAxis {
    int nz, ny, nx, channels;

    __device__ __forceinline__ int length() const { return axis == 0 ? nx : axis == 1 ? ny : nz; }
    __device__ __forceinline__ int lines() const { return axis == 0 ? ny : nx; }
    __device__ __forceinline__ int layers() const { return axis == 2 ? ny : nz; }

    /// Voxels from a position of a line to the next, from a line to its neighbour and from a layer to the next.
    __device__ __forceinline__ std::uint64_t step() const { return axis == 0 ? 1 : axis == 1 ? nx : plane(); }
    __device__ __forceinline__ std::uint64_t lineStep() const { return axis == 0 ? nx : 1; }
    __device__ __forceinline__ std::uint64_t layerStep() const { return axis == 2 ? nx : plane(); }
    __device__ __forceinline__ std::uint64_t plane() const { return static_cast<std::uint64_t>(nx) * ny; }
};

using AlongX = SweepAxis<0>;
using AlongY = SweepAxis<1>;
using AlongZ = SweepAxis<2>;

}  // namespace zel::cuda
