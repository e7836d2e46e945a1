#pragma once

#include <cuda_runtime.h>

#include <cstdint>

namespace zel::cuda {

/// Places an image inside a larger one and fills the border around it with the image mirrored, as mirrorIndex() says:
/// the edge pixel is repeated, and a border wider than the image reflects it again. Instances: float and double.
///
/// @param image            device memory, `height` rows of `width` pixels, at least one each; the pitch is bytes.
/// @param extended         device memory, `extendedHeight` rows of `extendedWidth` pixels; must not overlap the image.
///                         Bytes behind a row's end are left alone.
/// @param originX, originY where the image's first pixel comes to lie; the image fits behind it.
/// @param stream           queues here and returns without waiting.
/// @throws RuntimeError when the copy or a launch is refused; what was queued before it is done.
template <typename T>
void extendImageWithMirror(const T* image, std::uint64_t pitch, std::uint64_t width, std::uint64_t height, T* extended,
                           std::uint64_t extendedPitch, std::uint64_t originX, std::uint64_t originY,
                           std::uint64_t extendedWidth, std::uint64_t extendedHeight, cudaStream_t stream);

/// The border alone, around an image of `width` x `height` that lies at its place already.
template <typename T>
void fillExtendedPartOfImageWithMirror(T* extended, std::uint64_t extendedPitch, std::uint64_t width,
                                       std::uint64_t height, std::uint64_t originX, std::uint64_t originY,
                                       std::uint64_t extendedWidth, std::uint64_t extendedHeight, cudaStream_t stream);

/// Fills an image whose pixel (0, 0) is at (offsetX, offsetY) of the mirrored source; launched as RowLaunch.h says.
template <typename T>
__global__ void fillExtendedPartOfImageWithMirrorKernel(const T* source, unsigned long long sourcePitch,
                                                        unsigned long long sourceWidth, unsigned long long sourceHeight,
                                                        T* target, unsigned long long targetPitch,
                                                        unsigned long long targetWidth, int offsetX, int offsetY);

/// The same for a volume, mirrored along z too, in one launch: the grid is rows by slices of the target.
template <typename T>
__global__ void fillExtendedPartOfImage3dWithMirrorKernel(
    const T* source, unsigned long long sourcePitch, unsigned long long sourceSlicePitch,
    unsigned long long sourceWidth, unsigned long long sourceHeight, unsigned long long sourceDepth, T* target,
    unsigned long long targetPitch, unsigned long long targetSlicePitch, unsigned long long targetWidth, int offsetX,
    int offsetY, int offsetZ);

}  // namespace zel::cuda
