#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "lanes.h"

/// Readers copy a row of an image (a line along x) into a scratch line, extended past both ends by mirrorIndex().
/// Instances: the eight real pixel types. Pitches are bytes. None waits for the block's other lanes.
namespace zel::cuda {

/// Position i - begin of the line becomes pixel mirrorIndex(i, width) for i = begin ... begin + count - 1, in order, by
/// the calling lane alone.
template <typename T>
__device__ void readRowMirror(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t width,
                              LaneShared<T>* line, int begin, int count, std::uint64_t y, std::uint64_t z);

/// The same, divided among lanes: `lane` does every `stride`-th position.
template <typename T>
__device__ void readRowMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                      std::uint64_t width, LaneShared<T>* line, int begin, int count, std::uint64_t y,
                                      std::uint64_t z, int lane, int stride);

/// The same, from position 0 on, of the pixels whose indices a table holds, neighbours in it at most 1 apart. The width
/// is not looked at.
template <typename T>
__device__ void readRowMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                      std::uint64_t width, LaneShared<T>* line, LaneShared<unsigned long long>* offsets,
                                      int count, std::uint64_t y, std::uint64_t z, int lane, int stride);

}  // namespace zel::cuda
