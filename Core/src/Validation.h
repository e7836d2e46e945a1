#pragma once

#include <initializer_list>
#include <string_view>
#include <vector>

#include "zel/ImageModel.h"
#include "zel/Property.h"
#include "zel/VoxelTypes.h"

/// Checks of an algorithm's properties before a run. Each raises RuntimeError with the property's name, its value and
/// what is allowed.
namespace zel::validation {

/// An image property: its name for messages, and the image.
struct NamedImage {
    NamedImage(const PropertyReadImage& property) : name(property.name()), image(property.get()) {}   // NOLINT
    NamedImage(const PropertyWriteImage& property) : name(property.name()), image(property.get()) {}  // NOLINT

    std::string_view name;
    const ImageModel* image;
};

/// Voxel types as a property may have them.
using TypeCodes = std::vector<VoxelTypes>;
template <typename... T, typename... More>
TypeCodes codesOf(TypeList<T...>, TypeList<More...> = TypeList<>{}) {
    return {voxelTypeOf<T>..., voxelTypeOf<More>...};
}

/// The image is there, its axes have 1 to maxLength elements, axes 3 and 4 one, and where it says that it lies on the
/// device, it is one that shows where.
void requireImage(const NamedImage& image);
/// The same, and the image has one slice.
void requireImage2d(const NamedImage& image);
void requireSameSize(const NamedImage& image, const NamedImage& reference);
void requireNotLarger(const NamedImage& image, const NamedImage& reference);
void requireType(const NamedImage& image, const TypeCodes& allowed);
void requireSameType(const NamedImage& image, const NamedImage& reference);
/// The images share no memory.
void requireDistinct(const NamedImage& output, const NamedImage& input);

/// All that a filter from one 2D image to another asks of the two: it takes `allowed`, and the output is like the
/// input.
void requireFilterImages2d(const NamedImage& input, const NamedImage& output, const TypeCodes& allowed);

/// Each number of the property is one that it takes.
void requireAllowed(const Property<unsigned>& property);
void requireAllowed(const Property<double>& property);
void requireAllowed(const Property<Vector3<double>>& property);
/// The same also of the float that the number is narrowed to.
void requireAllowedAsFloat(const Property<double>& property);

/// With tiling on, no component of the tile size is 0.
void requireTile(const Property<int>& tilingMode, const Property<Vector2<unsigned>>& tileSize);
void requireTile(const Property<int>& tilingMode, const Property<Vector3<unsigned>>& tileSize);

}  // namespace zel::validation
