#include "tarnway/ImageProperties.h"

#include <bit>
#include <stdexcept>
#include <string>

namespace tarnway {

ImageType::ImageType(std::initializer_list<ImageDimension> further) {
    for (const ImageDimension dimension : further) present_ |= 1U << static_cast<unsigned>(dimension);
}

std::size_t ImageType::dimensionCount() const {
    return static_cast<std::size_t>(std::popcount(present_));
}

std::size_t ImageType::position(ImageDimension dimension) const {
    const unsigned before = (1U << static_cast<unsigned>(dimension)) - 1;
    return static_cast<std::size_t>(std::popcount(present_ & before));
}

ImageInfoProperty::ImageInfoProperty(ElementType elementType, const ImageType& type, const VectorX<std::size_t>& sizes)
    : elementType_(elementType), type_(type), sizes_(sizes) {
    if (sizes.size() != type.dimensionCount()) {
        throw std::invalid_argument("a view of " + std::to_string(type.dimensionCount()) + " dimensions got " +
                                    std::to_string(sizes.size()) + " sizes");
    }
}

std::size_t ImageInfoProperty::size(ImageDimension dimension) const {
    return type_.has(dimension) ? sizes_[type_.position(dimension)] : 1;
}

}  // namespace tarnway
