#include "ReadRow.h"

#include "MirrorIndex.h"
#include "OffsetBytes.h"

namespace zel::cuda {

namespace {

template <typename T>
__device__ __forceinline__ const T* rowStart(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                             std::uint64_t y, std::uint64_t z) {
    return offsetBytes(image, y * pitch + z * slicePitch);
}

}  // namespace

template <typename T>
__device__ void readRowMirror(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t width,
                              LaneShared<T>* line, int begin, int count, std::uint64_t y, std::uint64_t z) {
    readRowMirrorParallel(image, pitch, slicePitch, width, line, begin, count, y, z, 0, 1);
}

template <typename T>
__device__ void readRowMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                      std::uint64_t width, LaneShared<T>* line, int begin, int count, std::uint64_t y,
                                      std::uint64_t z, int lane, int stride) {
    const T* const first = rowStart(image, pitch, slicePitch, y, z);
    for (int i = lane; i < count; i += stride) {
        const int pixel = mirrorIndex(begin + i, static_cast<int>(width));
        line[i] = first[pixel];
    }
}

template <typename T>
__device__ void readRowMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t,
                                      LaneShared<T>* line, LaneShared<unsigned long long>* offsets, int count,
                                      std::uint64_t y, std::uint64_t z, int lane, int stride) {
    const T* const first = rowStart(image, pitch, slicePitch, y, z);
    copyByTable<T>(line, first, offsets, count, lane, stride);
}

#define READERS(T)                                                                                                     \
    template __device__ void readRowMirror(const T*, std::uint64_t, std::uint64_t, std::uint64_t, LaneShared<T>*, int, \
                                           int, std::uint64_t, std::uint64_t);                                         \
    template __device__ void readRowMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,              \
                                                   LaneShared<T>*, int, int, std::uint64_t, std::uint64_t, int, int);  \
    template __device__ void readRowMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,              \
                                                   LaneShared<T>*, LaneShared<unsigned long long>*, int,               \
                                                   std::uint64_t, std::uint64_t, int, int);
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
