#include "zel/TemporaryImage.h"

#include "Helper/raise.h"
#include "zel/HostImage.h"

namespace zel {

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
    image_.reset();
    image_ = std::make_unique<HostImage>(type, ImageSize{sizeX, sizeY, sizeZ, size3, size4});
}

}  // namespace zel
