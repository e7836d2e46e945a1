#include "zel/TemporaryImage.h"

#include "Helper/raise.h"

namespace zel {

namespace {

HostImage emptyImage() {
    return {VoxelTypes::uint8, {0, 0, 0, 0, 0}};
}

}  // namespace

ResizableImage::ResizableImage() : HostImage(emptyImage()) {}
ResizableImage::~ResizableImage() = default;

void ResizableImage::reserve(VoxelTypes type, const ImageSize& size) {
    HostImage& image = *this;
    image = emptyImage();
    image = HostImage(type, size);
}

TemporaryImage::TemporaryImage() = default;
TemporaryImage::~TemporaryImage() = default;

RefImpl<TemporaryImage> TemporaryImage::New(LocationMode mode) {
    if (mode != LocationMode::hostMemory) {
        raise<RuntimeError>("Core/src/TemporaryImage", __LINE__, "location mode ", static_cast<int>(mode),
                            " is not known; temporary images lie in host memory (mode 1)");
    }
    return RefImpl<TemporaryImage>(new TemporaryImage());
}

void TemporaryImage::reserve(VoxelTypes type, std::size_t sizeX, std::size_t sizeY, std::size_t sizeZ,
                             std::size_t size3, std::size_t size4) {
    image_.reserve(type, {sizeX, sizeY, sizeZ, size3, size4});
}

}  // namespace zel
