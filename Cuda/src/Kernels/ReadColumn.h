#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "lanes.h"

/// Readers copy a column of an image (a line along y) into a scratch line, extended past both ends by mirrorIndex().
/// Instances: the eight real pixel types, for computing also bundles of lines. Pitches are bytes. None waits for the
/// block's other lanes.
namespace zel::cuda {

/// Position i - begin of the line becomes pixel mirrorIndex(i, height) for i = begin ... begin + count - 1, in order,
/// by the calling lane alone.
template <typename T>
__device__ void readColumnMirror(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t height,
                                 LaneShared<T>* line, int begin, int count, std::uint64_t x, std::uint64_t z);

/// The same, divided among lanes: `lane` does every `stride`-th position. A bundle of lines is read at once, the first
/// one being at x.
template <typename T, typename Line>
__device__ void readColumnMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                         std::uint64_t height, Line line, int begin, int count, std::uint64_t x,
                                         std::uint64_t z, int lane, int stride);

/// The same, from position 0 on, of the pixels whose offsets in bytes from the line's first one a table holds. The
/// height is not looked at.
template <typename T>
__device__ void readColumnMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                         std::uint64_t height, LaneShared<T>* line,
                                         LaneShared<unsigned long long>* offsets, int count, std::uint64_t x,
                                         std::uint64_t z, int lane, int stride);

}  // namespace zel::cuda
