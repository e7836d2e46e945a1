#include "ReadZLine.h"

#include "MirroredLine.h"
#include "zel/VoxelTypes.h"

namespace zel::cuda {

namespace {

template <typename T>
__device__ __forceinline__ const T* zLineStart(const T* image, std::uint64_t pitch, std::uint64_t x, std::uint64_t y) {
    return offsetBytes(image, y * pitch + x * sizeof(T));
}

}  // namespace

template <typename T>
__device__ void readZLineMirror(const T* image, std::uint64_t pitch, std::uint64_t slicePitch, std::uint64_t depth,
                                LaneShared<T>* line, int begin, int count, std::uint64_t x, std::uint64_t y) {
    readZLineMirrorParallel(image, pitch, slicePitch, depth, line, begin, count, x, y, 0, 1);
}

template <typename T>
__device__ void readZLineMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t slicePitch,
                                        std::uint64_t depth, LaneShared<T>* line, int begin, int count, std::uint64_t x,
                                        std::uint64_t y, int lane, int stride) {
    readMirrored(ImageLine<T>{zLineStart(image, pitch, x, y), slicePitch}, depth, line, begin, count, lane, stride);
}

template <typename T, typename Line>
__device__ void readZLineMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t, std::uint64_t, Line line,
                                        const LaneShared<unsigned long long>* offsets, int count, std::uint64_t x,
                                        std::uint64_t y, int lane, int stride) {
    readByOffsets(zLineStart(image, pitch, x, y), line, offsets, count, lane, stride);
}

#define READERS(NAME, CODE, T)                                                                                      \
    template __device__ void readZLineMirror(const T*, std::uint64_t, std::uint64_t, std::uint64_t, LaneShared<T>*, \
                                             int, int, std::uint64_t, std::uint64_t);                               \
    template __device__ void readZLineMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,         \
                                                     LaneShared<T>*, int, int, std::uint64_t, std::uint64_t, int,   \
                                                     int);                                                          \
    template __device__ void readZLineMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,         \
                                                     LaneShared<T>*, const LaneShared<unsigned long long>*, int,    \
                                                     std::uint64_t, std::uint64_t, int, int);                       \
    template __device__ void readZLineMirrorParallel(const T*, std::uint64_t, std::uint64_t, std::uint64_t,         \
                                                     BundleLines<T>, const LaneShared<unsigned long long>*, int,    \
                                                     std::uint64_t, std::uint64_t, int, int);
ZEL_FOR_EACH_KERNEL_TYPE(READERS)
#undef READERS

}  // namespace zel::cuda
