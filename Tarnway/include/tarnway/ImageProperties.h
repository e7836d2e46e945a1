#pragma once

#include <cstddef>
#include <initializer_list>

#include "tarnway/ElementTypes.h"
#include "tarnway/Vector.h"
#include "tarnway/export.h"

namespace tarnway {

/// What an axis of a view means. The order of the enumerators is the order of the axes in a view's index tuples.
enum class ImageDimension : unsigned { x = 0, y = 1, z = 2, channel = 3, time = 4 };

inline constexpr std::size_t imageDimensionCount = 5;

/// Which dimensions a view has.
class TARNWAY_API ImageType {
public:
    /// x and y are always there: a view is made of rows.
    ImageType(std::initializer_list<ImageDimension> further);

    std::size_t dimensionCount() const;
    bool has(ImageDimension dimension) const { return (present_ >> static_cast<unsigned>(dimension) & 1U) != 0; }
    /// Place of a dimension in an index tuple. The type has to have it.
    std::size_t position(ImageDimension dimension) const;

private:
    unsigned present_ = 0b11;
};

/// Element type and dimensions of a view.
class TARNWAY_API ImageInfoProperty {
public:
    ImageInfoProperty(ElementType elementType, const ImageType& type, const VectorX<std::size_t>& sizes);

    ElementType elementType() const { return elementType_; }
    const ImageType& axesInterpretation() const { return type_; }
    /// Elements along each dimension that the type has, in the order of an index tuple.
    const VectorX<std::size_t>& sizes() const { return sizes_; }
    /// Elements along a dimension; 1 when the type lacks it.
    std::size_t size(ImageDimension dimension) const;

private:
    ElementType elementType_;
    ImageType type_;
    VectorX<std::size_t> sizes_;
};

/// All that a view tells about itself.
class TARNWAY_API ImageProperties {
public:
    explicit ImageProperties(const ImageInfoProperty& imageInfo) : imageInfo_(imageInfo) {}

    const ImageInfoProperty& imageInfo() const { return imageInfo_; }

private:
    ImageInfoProperty imageInfo_;
};

}  // namespace tarnway
