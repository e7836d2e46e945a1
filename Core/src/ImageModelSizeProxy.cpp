#include "zel/ImageModelSizeProxy.h"

#include "Helper/raise.h"

namespace zel {

namespace {

void requireBoxInside(const ImageModel& image, const std::array<std::size_t, 5>& origin,
                      const std::array<std::size_t, 5>& size) {
    for (int axis = 0; axis < 5; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        const std::size_t available = image.getDimension(axis);
        if (origin[a] > available || size[a] > available - origin[a]) {
            raise<RuntimeError>("Core/src/ImageModelSizeProxy", __LINE__, "a part of ", size[a], " elements from ",
                                origin[a], " on along axis ", axis, " does not lie in an image of ", available);
        }
    }
}

}  // namespace

ImageModelSizeProxyBase::~ImageModelSizeProxyBase() = default;

ImageModelSizeProxy::ImageModelSizeProxy(const ImageModel* image, std::size_t originX, std::size_t sizeX,
                                         std::size_t originY, std::size_t sizeY, std::size_t originZ, std::size_t sizeZ,
                                         std::size_t origin3, std::size_t size3, std::size_t origin4, std::size_t size4)
    : ImageModelSizeProxyBase(image),
      writable_(nullptr),
      origin_{originX, originY, originZ, origin3, origin4},
      size_{sizeX, sizeY, sizeZ, size3, size4} {
    requireBoxInside(*image, origin_, size_);
}

ImageModelSizeProxy::ImageModelSizeProxy(ImageModel* image, std::size_t originX, std::size_t sizeX, std::size_t originY,
                                         std::size_t sizeY, std::size_t originZ, std::size_t sizeZ, std::size_t origin3,
                                         std::size_t size3, std::size_t origin4, std::size_t size4)
    : ImageModelSizeProxy(static_cast<const ImageModel*>(image), originX, sizeX, originY, sizeY, originZ, sizeZ,
                          origin3, size3, origin4, size4) {
    writable_ = image;
}

ImageModelSizeProxy::~ImageModelSizeProxy() = default;

double ImageModelSizeProxy::getOrigin(const int& axis) const {
    double position = source_->getOrigin(axis);
    if (axis > 2) return position;
    Orientation orientation;
    source_->getOrientation(orientation);
    for (int k = 0; k < 3; ++k) {
        const auto along = static_cast<std::size_t>(k);
        position += orientation[along][static_cast<std::size_t>(axis)] * source_->getSpacing(k) *
                    static_cast<double>(origin_[along]);
    }
    return position;
}

void ImageModelSizeProxy::setOrigin(const int& axis, double value) {
    const double shift = value - getOrigin(axis);
    writable().setOrigin(axis, source_->getOrigin(axis) + shift);
}

ImageModel& ImageModelSizeProxy::writable() {
    if (writable_ == nullptr) {
        raise<RuntimeError>("Core/src/ImageModelSizeProxy", __LINE__, "a read-only part of an image cannot change it");
    }
    return *writable_;
}

bool ImageModelSizeProxy::contains(std::size_t count, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                                   std::size_t i4) const {
    return x <= size_[0] && count <= size_[0] - x && y < size_[1] && z < size_[2] && i3 < size_[3] && i4 < size_[4];
}

bool ImageModelSizeProxy::readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z,
                                  std::size_t i3, std::size_t i4) const {
    return contains(count, x, y, z, i3, i4) && source_->readRow(count, buffer, x + origin_[0], y + origin_[1],
                                                                z + origin_[2], i3 + origin_[3], i4 + origin_[4]);
}

bool ImageModelSizeProxy::writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z,
                                   std::size_t i3, std::size_t i4) {
    return writable_ != nullptr && contains(count, x, y, z, i3, i4) &&
           writable_->writeRow(count, buffer, x + origin_[0], y + origin_[1], z + origin_[2], i3 + origin_[3],
                               i4 + origin_[4]);
}

bool ImageModelSizeProxy::isContiguous() const {
    // Up to the first axis that is cut the box has all of the image; beyond it, it must have one element only.
    bool cut = false;
    for (int axis = 0; axis < 5; ++axis) {
        const std::size_t size = size_[static_cast<std::size_t>(axis)];
        if (cut && size != 1) return false;
        cut = cut || size != source_->getDimension(axis);
    }
    return true;
}

std::size_t ImageModelSizeProxy::byteOffset() const {
    std::size_t elements = 0;
    for (int axis = 4; axis >= 0; --axis) {
        elements = elements * source_->getDimension(axis) + origin_[static_cast<std::size_t>(axis)];
    }
    return elements * helper::getSizeOf(getDataType());
}

void* ImageModelSizeProxy::hostDataWritable() {
    void* const data = writable_ != nullptr && isContiguous() ? writable_->hostDataWritable() : nullptr;
    return data == nullptr ? nullptr : static_cast<std::byte*>(data) + byteOffset();
}

const void* ImageModelSizeProxy::hostDataReadOnly() const {
    const void* const data = isContiguous() ? source_->hostDataReadOnly() : nullptr;
    return data == nullptr ? nullptr : static_cast<const std::byte*>(data) + byteOffset();
}

}  // namespace zel
