#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "zel/ImageModel.h"
#include "zel/Property.h"
#include "zel/Vector.h"

/// Checks of an algorithm's properties before a run. Each raises RuntimeError with the property's name, its value and
/// what is allowed.
namespace zel::validation {

/// The longest axis, mask or step: positions along a line, and NPP's fields, are signed 32-bit numbers.
inline constexpr unsigned maxLength = 2147483647;

/// An image property: its name for messages, and the image.
struct NamedImage {
    NamedImage(const PropertyReadImage& property) : name(property.name()), image(property.get()) {}   // NOLINT
    NamedImage(const PropertyWriteImage& property) : name(property.name()), image(property.get()) {}  // NOLINT

    std::string_view name;
    const ImageModel* image;
};

/// The image is there, its axes have 1 to maxLength elements, axes 3 and 4 one, and where it says that it lies on the
/// device, it is one that shows where.
void requireImage(const NamedImage& image);
/// The same, and the image has one slice.
void requireImage2d(const NamedImage& image);
void requireSameSize(const NamedImage& image, const NamedImage& reference);
void requireNotLarger(const NamedImage& image, const NamedImage& reference);
void requireType(const NamedImage& image, std::initializer_list<VoxelTypes> allowed);
void requireSameType(const NamedImage& image, const NamedImage& reference);
/// The images share no memory.
void requireDistinct(const NamedImage& output, const NamedImage& input);

/// All that a filter from one 2D image to another asks of the two: it takes `allowed`, and the output is like the
/// input.
void requireFilterImages2d(const PropertyReadImage& input, const PropertyWriteImage& output,
                           std::initializer_list<VoxelTypes> allowed);

void requireRange(const Property<unsigned>& property, unsigned low, unsigned high);
/// Finite and not below 0, or above 0.
void requireNotNegative(std::string_view name, double value);
void requirePositive(std::string_view name, double value);
/// Finite and above 0 also as the float that it is narrowed to.
void requirePositiveFloat(std::string_view name, double value);

/// With tiling on, no component of the tile size is 0.
void requireTile(const Property<int>& tilingMode, const Property<Vector2<unsigned>>& tileSize);
void requireTile(const Property<int>& tilingMode, const Property<Vector3<unsigned>>& tileSize);

/// The types that the back end has kernels of its own for.
inline constexpr std::initializer_list<VoxelTypes> kernelLibraryTypes = {
    VoxelTypes::uint8, VoxelTypes::uint16, VoxelTypes::uint32,  VoxelTypes::int8,
    VoxelTypes::int16, VoxelTypes::int32,  VoxelTypes::float32, VoxelTypes::float64};

}  // namespace zel::validation
