#pragma once

#include <cstddef>
#include <memory>

#include "tarnway_cuda/CudaImageExtension.h"
#include "zel/ImageModel.h"

namespace zel::cuda {

/// The GPU side of an image that lies on a GPU, or of the image that a proxy shows a part of; null for any other image.
std::shared_ptr<tarnway_cuda::CudaImageExtension> cudaImageOf(const ImageModel* image);

/// Device address of the image's first voxel; for a proxy that of its part's first voxel. Null, with a pitch of 0, when
/// the image does not lie on a GPU.
/// @param pitch  gets the bytes from row to row.
void* deviceDataPointer(ImageModel* image, std::size_t& pitch);
const void* deviceDataPointerConst(const ImageModel* image, std::size_t& pitch);

/// Bytes from slice to slice of an image on a GPU; of a proxy those of the image that it shows a part of. 0 for any
/// other image.
std::size_t deviceSlicePitch(const ImageModel* image);

}  // namespace zel::cuda
