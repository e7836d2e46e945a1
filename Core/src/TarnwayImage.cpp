#include "zel/TarnwayImage.h"

#include <utility>

namespace zel {

using tarnway::ImageDimension;

namespace {

// The image's and the view's numberings of the last two dimensions are crossed.
constexpr ImageDimension dimensionOfAxis[] = {ImageDimension::x, ImageDimension::y, ImageDimension::z,
                                              ImageDimension::time, ImageDimension::channel};

/// The view's index tuple of an image position; false when a dimension that the view lacks is not at 0.
bool toIndex(const tarnway::ImageInfoProperty& info, const std::array<std::size_t, 5>& position,
             tarnway::VectorX<std::size_t>& index) {
    for (std::size_t axis = 0; axis < position.size(); ++axis) {
        const ImageDimension dimension = dimensionOfAxis[axis];
        if (info.axesInterpretation().has(dimension)) {
            index[info.axesInterpretation().position(dimension)] = position[axis];
        } else if (position[axis] != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

TarnwayImage::TarnwayImage(std::shared_ptr<tarnway::ImageView> view) : view_(std::move(view)) {}
TarnwayImage::~TarnwayImage() = default;

std::size_t TarnwayImage::getDimension(const int& axis) const {
    return view_ == nullptr ? 0 : view_->imageProperties().imageInfo().size(dimensionOfAxis[axis]);
}

VoxelTypes TarnwayImage::getDataType() const {
    if (view_ == nullptr) return VoxelTypes::uint8;
    return static_cast<VoxelTypes>(view_->imageProperties().imageInfo().elementType());
}

std::size_t TarnwayImage::byteStride(const int& axis) const {
    if (view_ == nullptr) return 0;
    const tarnway::ImageType type = view_->imageProperties().imageInfo().axesInterpretation();
    const ImageDimension dimension = dimensionOfAxis[axis];
    return type.has(dimension) ? view_->indexer().byteStride()[type.position(dimension)] : 0;
}

bool TarnwayImage::isDeviceResident() const {
    return view_ != nullptr && view_->isOnDevice();
}

bool TarnwayImage::readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                           std::size_t i4) const {
    if (view_ == nullptr) return false;
    const tarnway::ImageInfoProperty& info = view_->imageProperties().imageInfo();
    tarnway::VectorX<std::size_t> index(info.axesInterpretation().dimensionCount());
    return toIndex(info, {x, y, z, i3, i4}, index) && view_->readRow(count, buffer, index);
}

bool TarnwayImage::writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z,
                            std::size_t i3, std::size_t i4) {
    if (view_ == nullptr) return false;
    const tarnway::ImageInfoProperty& info = view_->imageProperties().imageInfo();
    tarnway::VectorX<std::size_t> index(info.axesInterpretation().dimensionCount());
    return toIndex(info, {x, y, z, i3, i4}, index) && view_->writeRow(count, buffer, index);
}

}  // namespace zel
