#pragma once

#include <cuda_runtime.h>

#include <cstddef>

#include "zel/ImageModel.h"

namespace zel::cuda {

/// Copies between an image and device memory. Each returns when the data has arrived, and synchronises the whole device
/// on its way. Images with contiguous host data go in one copy; others row by row through a staging buffer of at least
/// 1 MiB. Images may be proxies on a tile.
///
/// @param device      address of the first element in device memory.
/// @param pitch       bytes from row to row there, at least a row of the image.
/// @param slicePitch  bytes from slice to slice there, a multiple of the pitch.
/// @param i3, i4      indices along the image's axes 3 and 4.
/// @throws RuntimeError when a row cannot be read or written, naming it, or when the device refuses.

void copyImageToDevice2d(const ImageModel& image, void* device, std::size_t pitch, std::size_t i3, std::size_t i4,
                         cudaStream_t stream);
void copyDeviceToImage2d(const void* device, std::size_t pitch, ImageModel& image, std::size_t i3, std::size_t i4,
                         cudaStream_t stream);
void copyImageToDevice3d(const ImageModel& image, void* device, std::size_t pitch, std::size_t slicePitch,
                         std::size_t i3, std::size_t i4, cudaStream_t stream);
void copyDeviceToImage3d(const void* device, std::size_t pitch, std::size_t slicePitch, ImageModel& image,
                         std::size_t i3, std::size_t i4, cudaStream_t stream);

}  // namespace zel::cuda
