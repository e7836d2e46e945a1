#include "ReadZLine.h"

#include "MirrorIndex.h"
#include "OffsetBytes.h"

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
    const T* const first = zLineStart(image, pitch, x, y);
    for (int i = lane; i < count; i += stride) {
        const int pixel = mirrorIndex(begin + i, static_cast<int>(depth));
        line[i] = *offsetBytes(first, pixel * slicePitch);
    }
}

template <typename T, typename Line>
__device__ void readZLineMirrorParallel(const T* image, std::uint64_t pitch, std::uint64_t, std::uint64_t, Line line,
                                        const LaneShared<unsigned long long>* offsets, int count, std::uint64_t x,
                                        std::uint64_t y, int lane, int stride) {
    const T* const first = zLineStart(image, pitch, x, y);
    for (int i = lane; i < count; i += stride) storePosition(line, i, offsetBytes(first, offsets[i]));
}

#define READERS(T)                                                                                                  \
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
