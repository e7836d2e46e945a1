#include "tarnway/ImageProperties.h"

#include <bit>
#include <stdexcept>
#include <string>

namespace tarnway {

std::size_t elementSize(ElementType type) {
    switch (type) {
        case ElementType::uint8:
        case ElementType::int8:
            return 1;
        case ElementType::uint16:
        case ElementType::int16:
            return 2;
        case ElementType::uint32:
        case ElementType::int32:
        case ElementType::float32:
            return 4;
        case ElementType::uint64:
        case ElementType::int64:
        case ElementType::float64:
        case ElementType::complex64:
            return 8;
        case ElementType::complex128:
            return 16;
    }
    throw std::invalid_argument("no element type has the code " + std::to_string(static_cast<int>(type)));
}

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
