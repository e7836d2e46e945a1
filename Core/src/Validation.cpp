#include "Validation.h"

#include <algorithm>
#include <array>

#include "Helper/raise.h"
#include "SharedMemory.h"
#include "zel/TarnwayImage.h"

namespace zel::validation {

namespace {

constexpr std::array axisNames = {"x", "y", "z", "axis 3", "axis 4"};

template <typename... Parts>
[[noreturn]] void refuse(const Parts&... parts) {
    raise<RuntimeError>("Core/src/Validation", __LINE__, parts...);
}

std::string sizeText(const ImageModel& image) {
    return plainText(image.getDimension(0), " x ", image.getDimension(1), " x ", image.getDimension(2));
}

std::string typeList(const TypeCodes& types) {
    std::string text;
    for (const VoxelTypes type : types) text.append(text.empty() ? "" : ", ").append(voxelTypeName(type));
    return text;
}

void requireDimension(const NamedImage& image, int axis, std::size_t low, std::size_t high, const char* allowed) {
    const std::size_t size = image.image->getDimension(axis);
    if (size >= low && size <= high) return;
    refuse(image.name, " has ", size, " elements along ", axisNames[static_cast<std::size_t>(axis)], "; ", allowed);
}

void requireComponents(const Property<int>& tilingMode, std::string_view name, std::initializer_list<unsigned> tile) {
    if (tilingMode.get() != 1 || std::ranges::all_of(tile, [](unsigned c) { return tileLength.contains(c); })) return;
    std::string text;
    for (const unsigned component : tile) text.append(text.empty() ? "" : ", ").append(std::to_string(component));
    refuse(name, " is (", text, "); with tilingMode 1 each component must be at least 1");
}

void requireNumber(std::string_view name, double value, const Allowed<double>& allowed) {
    if (allowed.contains(value)) return;
    refuse(name, " is ", value, "; it must be a finite number ", toText(allowed));
}

}  // namespace

void requireImage(const NamedImage& image) {
    if (image.image == nullptr) refuse(image.name, " is missing; an image is needed");
    for (int axis = 0; axis < 5; ++axis) {
        requireDimension(image, axis, 1, SIZE_MAX, "an image must have at least 1");
    }
    for (const int axis : {0, 1, 2}) requireDimension(image, axis, 1, maxLength, "at most 2147483647 are allowed");
    for (const int axis : {3, 4}) requireDimension(image, axis, 1, 1, "this algorithm takes 1");
    if (image.image->isDeviceResident() && dynamic_cast<const TarnwayImage*>(&imageBehind(*image.image)) == nullptr) {
        refuse(image.name, " says that it lies on the device; only a TarnwayImage or a part of one can");
    }
}

void requireImage2d(const NamedImage& image) {
    requireImage(image);
    requireDimension(image, 2, 1, 1, "a 2D algorithm takes 1; run it slice by slice");
}

void requireSameSize(const NamedImage& image, const NamedImage& reference) {
    for (int axis = 0; axis < 5; ++axis) {
        if (image.image->getDimension(axis) == reference.image->getDimension(axis)) continue;
        refuse(image.name, " is ", sizeText(*image.image), "; it must have the size of ", reference.name, ", ",
               sizeText(*reference.image));
    }
}

void requireNotLarger(const NamedImage& image, const NamedImage& reference) {
    for (int axis = 0; axis < 5; ++axis) {
        if (image.image->getDimension(axis) <= reference.image->getDimension(axis)) continue;
        refuse(image.name, " is ", sizeText(*image.image), "; it must be no larger than ", reference.name, ", ",
               sizeText(*reference.image));
    }
}

void requireType(const NamedImage& image, const TypeCodes& allowed) {
    const VoxelTypes type = image.image->getDataType();
    if (std::find(allowed.begin(), allowed.end(), type) != allowed.end()) return;
    refuse(image.name, " is of type ", voxelTypeName(type), "; the type must be one of ", typeList(allowed));
}

void requireSameType(const NamedImage& image, const NamedImage& reference) {
    const VoxelTypes type = image.image->getDataType();
    if (type == reference.image->getDataType()) return;
    refuse(image.name, " is of type ", voxelTypeName(type), "; it must have the type of ", reference.name, ", ",
           voxelTypeName(reference.image->getDataType()));
}

void requireDistinct(const NamedImage& output, const NamedImage& input) {
    if (!sharesMemory(*output.image, *input.image)) return;
    refuse(output.name, " shares memory with ", input.name, "; it must be another image");
}

void requireFilterImages2d(const NamedImage& input, const NamedImage& output, const TypeCodes& allowed) {
    requireImage2d(input);
    requireImage2d(output);
    requireType(input, allowed);
    requireSameSize(output, input);
    requireSameType(output, input);
    requireDistinct(output, input);
}

void requireAllowed(const Property<unsigned>& property) {
    if (property.allowed().contains(property)) return;
    refuse(property.name(), " is ", property.get(), "; it must be ", toText(property.allowed()));
}

void requireAllowed(const Property<double>& property) {
    requireNumber(property.name(), property.get(), property.allowed());
}

void requireAllowed(const Property<Vector3<double>>& property) {
    const auto& [x, y, z] = property.get();
    requireNumber(plainText(property.name(), ".x"), x, property.allowed());
    requireNumber(plainText(property.name(), ".y"), y, property.allowed());
    requireNumber(plainText(property.name(), ".z"), z, property.allowed());
}

void requireAllowedAsFloat(const Property<double>& property) {
    requireAllowed(property);
    const auto narrowed = static_cast<float>(property.get());
    if (property.allowed().contains(narrowed)) return;
    refuse(property.name(), " is ", property.get(), "; as a float it must be a finite number ",
           toText(property.allowed()));
}

void requireTile(const Property<int>& tilingMode, const Property<Vector2<unsigned>>& tileSize) {
    requireComponents(tilingMode, tileSize.name(), {tileSize.get().x, tileSize.get().y});
}

void requireTile(const Property<int>& tilingMode, const Property<Vector3<unsigned>>& tileSize) {
    requireComponents(tilingMode, tileSize.name(), {tileSize.get().x, tileSize.get().y, tileSize.get().z});
}

}  // namespace zel::validation
