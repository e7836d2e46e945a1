#include "DeviceResidentImage_CUDA.h"

#include <array>

#include "OffsetBytes.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"

namespace zel::cuda {

using tarnway::ImageDimension;
using tarnway_cuda::CudaImageExtension;

std::shared_ptr<CudaImageExtension> cudaImageOf(const ImageModel* image) {
    if (image == nullptr || !image->isDeviceResident()) return nullptr;
    if (const auto* proxy = dynamic_cast<const ImageModelSizeProxyBase*>(image)) {
        return cudaImageOf(proxy->sourceImage());
    }
    const auto* const shown = dynamic_cast<const TarnwayImage*>(image);
    if (shown == nullptr || shown->getTarnwayImageView() == nullptr) return nullptr;
    return tarnway_cuda::CudaExtensionProvider::cudaImage(shown->getTarnwayImageView());
}

namespace {

/// Bytes from the first voxel of the whole image to that of the part which a chain of proxies shows.
std::size_t partOffset(const ImageModel* image, const CudaImageExtension& extension) {
    std::array<std::size_t, 5> origin{};
    const auto* proxy = dynamic_cast<const ImageModelSizeProxyBase*>(image);
    if (proxy == nullptr) return 0;
    while (proxy != nullptr) {
        std::array<std::size_t, 5> step{};
        proxy->proxyOrigin(step);
        for (std::size_t axis = 0; axis < origin.size(); ++axis) origin[axis] += step[axis];
        image = proxy->sourceImage();
        proxy = dynamic_cast<const ImageModelSizeProxyBase*>(image);
    }

    const auto& shown = dynamic_cast<const TarnwayImage&>(*image);
    const tarnway::ImageType type = shown.getTarnwayImageView()->imageProperties().imageInfo().axesInterpretation();
    // Images and views number their last two dimensions the other way round.
    constexpr std::array<std::size_t, 5> axisOfDimension = {0, 1, 2, 4, 3};
    tarnway::VectorX<std::size_t> index(type.dimensionCount());
    std::size_t entry = 0;
    for (unsigned dimension = 0; dimension < axisOfDimension.size(); ++dimension) {
        if (type.has(static_cast<ImageDimension>(dimension))) index[entry++] = origin[axisOfDimension[dimension]];
    }
    return extension.indexer().byteOffset(index);
}

}  // namespace

void* deviceDataPointer(ImageModel* image, std::size_t& pitch) {
    pitch = 0;
    const auto extension = cudaImageOf(image);
    if (extension == nullptr) return nullptr;
    pitch = extension->indexer().byteStride()[1];
    return offsetBytes(extension->deviceData(), partOffset(image, *extension));
}

const void* deviceDataPointerConst(const ImageModel* image, std::size_t& pitch) {
    pitch = 0;
    const auto extension = cudaImageOf(image);
    if (extension == nullptr) return nullptr;
    pitch = extension->indexer().byteStride()[1];
    return offsetBytes(extension->deviceDataReadOnly(), partOffset(image, *extension));
}

std::size_t deviceSlicePitch(const ImageModel* image) {
    const auto extension = cudaImageOf(image);
    if (extension == nullptr) return 0;
    const tarnway::VectorX<std::size_t>& stride = extension->indexer().byteStride();
    return stride.size() > 2 ? stride[2] : stride[1] * image->getDimension(1);
}

}  // namespace zel::cuda
