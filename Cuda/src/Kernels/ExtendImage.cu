#include "ExtendImage.h"

#include "MirrorIndex.h"
#include "RowLaunch.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "lanes.h"

namespace zel::cuda {

namespace {

/// Position x of a row, counted from `offset` of a mirrored one.
template <typename T>
__device__ __forceinline__ void fillWithMirroredRow(const T* source, unsigned long long sourceWidth, T* target,
                                                    unsigned long long targetWidth, int offset) {
    const int width = static_cast<int>(sourceWidth);
    forEachColumn(targetWidth,
                  [=](std::uint64_t x) { target[x] = source[mirrorIndex(static_cast<int>(x) + offset, width)]; });
}

/// The row of a mirrored image that a block's row shows.
__device__ __forceinline__ unsigned long long mirroredRow(unsigned int row, int offset, unsigned long long count) {
    return mirrorIndex(static_cast<int>(row) + offset, static_cast<int>(count));
}

}  // namespace

template <typename T>
__global__ void fillExtendedPartOfImageWithMirrorKernel(const T* source, unsigned long long sourcePitch,
                                                        unsigned long long sourceWidth, unsigned long long sourceHeight,
                                                        T* target, unsigned long long targetPitch,
                                                        unsigned long long targetWidth, int offsetX, int offsetY) {
    const T* const sourceRow = offsetBytes(source, sourcePitch * mirroredRow(blockIdx.x, offsetY, sourceHeight));
    fillWithMirroredRow(sourceRow, sourceWidth, offsetBytes(target, targetPitch * blockIdx.x), targetWidth, offsetX);
}

template <typename T>
__global__ void fillExtendedPartOfImage3dWithMirrorKernel(
    const T* source, unsigned long long sourcePitch, unsigned long long sourceSlicePitch,
    unsigned long long sourceWidth, unsigned long long sourceHeight, unsigned long long sourceDepth, T* target,
    unsigned long long targetPitch, unsigned long long targetSlicePitch, unsigned long long targetWidth, int offsetX,
    int offsetY, int offsetZ) {
    const T* const sourceRow =
        offsetBytes(source, sourcePitch * mirroredRow(blockIdx.x, offsetY, sourceHeight) +
                                sourceSlicePitch * mirroredRow(blockIdx.y, offsetZ, sourceDepth));
    T* const targetRow = offsetBytes(target, targetPitch * blockIdx.x + targetSlicePitch * blockIdx.y);
    fillWithMirroredRow(sourceRow, sourceWidth, targetRow, targetWidth, offsetX);
}

template <typename T>
void extendImageWithMirror(const T* image, std::uint64_t pitch, std::uint64_t width, std::uint64_t height, T* extended,
                           std::uint64_t extendedPitch, std::uint64_t originX, std::uint64_t originY,
                           std::uint64_t extendedWidth, std::uint64_t extendedHeight, cudaStream_t stream) {
    T* const centre = offsetBytes(extended + originX, originY * extendedPitch);
    copyDeviceVolume(image, pitch, pitch * height, centre, extendedPitch, extendedPitch * height, width, height, 1,
                     stream);
    fillExtendedPartOfImageWithMirror(extended, extendedPitch, width, height, originX, originY, extendedWidth,
                                      extendedHeight, stream);
}

template <typename T>
void fillExtendedPartOfImageWithMirror(T* extended, std::uint64_t extendedPitch, std::uint64_t width,
                                       std::uint64_t height, std::uint64_t originX, std::uint64_t originY,
                                       std::uint64_t extendedWidth, std::uint64_t extendedHeight, cudaStream_t stream) {
    const auto pixelAt = [=](std::uint64_t x, std::uint64_t y) { return offsetBytes(extended + x, y * extendedPitch); };
    const T* const centre = pixelAt(originX, originY);
    // A band of rows whose first pixel is at (x, y) of the extended image.
    const auto fillBand = [=](std::uint64_t x, std::uint64_t y, std::uint64_t bandWidth, std::uint64_t rows) {
        launchRowsPerSlice(rows, 1, stream, [=](const cudaLaunchConfig_t& config, std::uint64_t) {
            cudaLaunchKernelEx(&config, fillExtendedPartOfImageWithMirrorKernel<T>, centre, extendedPitch, width,
                               height, pixelAt(x, y), extendedPitch, bandWidth, static_cast<int>(x - originX),
                               static_cast<int>(y - originY));
        });
    };
    const std::uint64_t right = originX + width, bottom = originY + height;
    if (originY != 0) fillBand(0, 0, extendedWidth, originY);
    if (originX != 0) fillBand(0, originY, originX, height);
    if (right < extendedWidth) fillBand(right, originY, extendedWidth - right, height);
    if (bottom < extendedHeight) fillBand(0, bottom, extendedWidth, extendedHeight - bottom);
}

#define INSTANCES(T)                                                                                                  \
    template void extendImageWithMirror(const T*, std::uint64_t, std::uint64_t, std::uint64_t, T*, std::uint64_t,     \
                                        std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, cudaStream_t);    \
    template void fillExtendedPartOfImageWithMirror(T*, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,   \
                                                    std::uint64_t, std::uint64_t, std::uint64_t, cudaStream_t);       \
    template __global__ void fillExtendedPartOfImage3dWithMirrorKernel(                                               \
        const T*, unsigned long long, unsigned long long, unsigned long long, unsigned long long, unsigned long long, \
        T*, unsigned long long, unsigned long long, unsigned long long, int, int, int);
INSTANCES(float)
INSTANCES(double)
#undef INSTANCES

}  // namespace zel::cuda
