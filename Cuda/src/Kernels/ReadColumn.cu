#include "ReadColumn.h"

#include "MirroredLine.h"
#include "zel/VoxelTypes.h"

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
    readMirrored(ImageLine<T>{columnStart(image, slicePitch, x, z), pitch}, height, line, begin, count, lane, stride);
}

template <typename T>
__device__ void readColumnMirrorParallel(const T* image, std::uint64_t, std::uint64_t slicePitch, std::uint64_t,
                                         LaneShared<T>* line, LaneShared<unsigned long long>* offsets, int count,
                                         std::uint64_t x, std::uint64_t z, int lane, int stride) {
    readByOffsets(columnStart(image, slicePitch, x, z), line, offsets, count, lane, stride);
}

#define READERS(NAME, CODE, T)                                                                                       \
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
ZEL_FOR_EACH_KERNEL_TYPE(READERS)
#undef READERS

}  // namespace zel::cuda
