#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "lanes.h"

/// Readers copy a line of an image along z into a scratch line, extended past both ends by mirrorIndex(). Instances:
/// the eight real pixel types, by table also bundles of lines. Pitches are bytes. None waits for the block's other
/// lanes.
namespace zel::cuda {

/// Position i - begin of the line becomes pixel mirrorIndex(i, depth) for i = begin ... begin + count - 1, in order, by
/// the calling lane alone.
template <typename T>
__device__ void readZLineMirror(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t depth,
                                LaneShared<T>* line, int begin, int count, std::uint64_t x, std::uint64_t y);

/// The same, divided among lanes: `lane` does every `stride`-th position.
template <typename T>
__device__ void readZLineMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                        std::uint64_t depth, LaneShared<T>* line, int begin, int count, std::uint64_t x,
                                        std::uint64_t y, int lane, int stride);

/// The same, from position 0 on, of the pixels whose offsets in bytes from the line's first one a table holds. A bundle
/// of lines is read at once, the first one being at x. The depth is not looked at.
template <typename T, typename Line>
__device__ void readZLineMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                        std::uint64_t depth, Line line, const LaneShared<unsigned long long>* offsets,
                                        int count, std::uint64_t x, std::uint64_t y, int lane, int stride);

}  // namespace zel::cuda
