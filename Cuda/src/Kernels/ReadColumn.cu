#include "ReadColumn.h"

#include "MirrorIndex.h"
#include "OffsetBytes.h"

namespace zel::cuda {

namespace {

template <typename T>
__device__ __forceinline__ const T* columnStart(const T* image, std::uint64_t slicePitch, std::uint64_t x,
                                                std::uint64_t z) {
    return offsetBytes(image, x * sizeof(T) + z * slicePitch);
}

}  // namespace

template <typename T>
__device__ void readColumnMirror(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t height,
                                 LaneShared<T>* line, int begin, int count, std::uint64_t x, std::uint64_t z) {
    readColumnMirrorParallel(image, pitch, slicePitch, height, line, begin, count, x, z, 0, 1);
}

template <typename T, typename Line>
__device__ void readColumnMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                         std::uint64_t height, Line line, int begin, int count, std::uint64_t x,
                                         std::uint64_t z, int lane, int stride) {
    const T* const first = columnStart(image, slicePitch, x, z);
    for (int i = lane; i < count; i += stride) {
        const int pixel = mirrorIndex(begin + i, static_cast<int>(height));
        storePosition(line, i, offsetBytes(first, pixel * pitch));
    }
}

template <typename T>
__device__ void readColumnMirrorParallel(const T* image, std::uint64_t, std::uint64_t slicePitch, std::uint64_t,
                                         LaneShared<T>* line, LaneShared<unsigned long long>* offsets, int count,
                                         std::uint64_t x, std::uint64_t z, int lane, int stride) {
    const T* const first = columnStart(image, slicePitch, x, z);
    for (int i = lane; i < count; i += stride) line[i] = *offsetBytes(first, offsets[i]);
}

#define READERS(T)                                                                                                   \
    template __device__ void readColumnMirror(const T*, std::uint64_t, std::uint64_t, std::uint64_t, LaneShared<T>*, \
                                              int, int, std::uint64_t, std::uint64_t);                               \
    template __device__ void readColumnMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,         \
                                                      LaneShared<T>*, int, int, std::uint64_t, std::uint64_t, int,   \
                                                      int);                                                          \
    template __device__ void readColumnMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,         \
                                                      LaneShared<T>*, LaneShared<unsigned long long>*, int,          \
                                                      std::uint64_t, std::uint64_t, int, int);                       \
    template __device__ void readColumnMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,         \
                                                      BundleLines<T>, int, int, std::uint64_t, std::uint64_t, int,   \
                                                      int);
READERS(std::uint8_t)
READERS(std::uint16_t)
READERS(std::uint32_t)
READERS(std::int8_t)
READERS(std::int16_t)
READERS(std::int32_t)
READERS(float)
READERS(double)
#undef READERS

}  // namespace zel::cuda
