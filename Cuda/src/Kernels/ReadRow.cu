#include "ReadRow.h"

#include "MirroredLine.h"
#include "zel/VoxelTypes.h"

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
    const ImageLine<T> row{rowStart(image, pitch, slicePitch, y, z), sizeof(T)};
    readMirrored(row, width, line, begin, count, lane, stride);
}

template <typename T>
__device__ void readRowMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t,
                                      LaneShared<T>* line, LaneShared<unsigned long long>* offsets, int count,
                                      std::uint64_t y, std::uint64_t z, int lane, int stride) {
    copyByTable<T>(line, rowStart(image, pitch, slicePitch, y, z), offsets, count, lane, stride);
}

#define READERS(NAME, CODE, T)                                                                                         \
    template __device__ void readRowMirror(const T*, std::uint64_t, std::uint64_t, std::uint64_t, LaneShared<T>*, int, \
                                           int, std::uint64_t, std::uint64_t);                                         \
    template __device__ void readRowMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,              \
                                                   LaneShared<T>*, int, int, std::uint64_t, std::uint64_t, int, int);  \
    template __device__ void readRowMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,              \
                                                   LaneShared<T>*, LaneShared<unsigned long long>*, int,               \
                                                   std::uint64_t, std::uint64_t, int, int);
ZEL_FOR_EACH_KERNEL_TYPE(READERS)
#undef READERS

}  // namespace zel::cuda
