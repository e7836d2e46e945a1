#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "MirrorIndex.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"

// What the readers of rows, columns and z-lines share: they differ in where a line begins and how its pixels follow.
namespace zel::cuda {

/// A line of an image: its first pixel, and the bytes from one pixel to the next.
template <typename T>
struct ImageLine {
    const T* first;
    std::uint64_t step;
};

/// Position i - begin of the line becomes pixel mirrorIndex(i, length), for i = begin + lane, begin + lane + stride,
/// ... below begin + count.
template <typename T, typename Line>
__device__ __forceinline__ void readMirrored(const ImageLine<T>& image, std::uint64_t length, const Line& line,
                                             int begin, int count, int lane, int stride) {
    for (int i = lane; i < count; i += stride) {
        const int pixel = mirrorIndex(begin + i, static_cast<int>(length));
        storePosition(line, i, offsetBytes(image.first, pixel * image.step));
    }
}

/// Position i of the line becomes the pixel offsets[i] bytes behind the first one, for i = lane, lane + stride, ...
/// below count.
template <typename T, typename Line>
__device__ __forceinline__ void readByOffsets(const T* first, const Line& line,
                                              const LaneShared<unsigned long long>* offsets, int count, int lane,
                                              int stride) {
    for (int i = lane; i < count; i += stride) storePosition(line, i, offsetBytes(first, offsets[i]));
}

}  // namespace zel::cuda
