#include "SharedMemory.h"

#include <functional>
#include <optional>

#include "zel/HostImage.h"
#include "zel/ImageModelAdapter.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"

namespace zel {

namespace {

using Position = std::array<std::size_t, 5>;

/// The image behind all proxies and adapters, and the box of it that is seen.
struct SeenPart {
    const ImageModel* image;
    Position origin{};
    Position size{};
};

Position dimensionsOf(const ImageModel& image) {
    Position dimensions;
    for (int axis = 0; axis < 5; ++axis) dimensions[static_cast<std::size_t>(axis)] = image.getDimension(axis);
    return dimensions;
}

SeenPart resolve(const ImageModel& image) {
    SeenPart part{&image, {}, dimensionsOf(image)};
    for (;;) {
        if (const auto* proxy = dynamic_cast<const ImageModelSizeProxyBase*>(part.image)) {
            Position offset{};
            proxy->proxyOrigin(offset);
            for (std::size_t axis = 0; axis < 5; ++axis) part.origin[axis] += offset[axis];
            part.image = proxy->sourceImage();
        } else if (const auto* adapter = dynamic_cast<const ImageModelAdapter*>(part.image)) {
            part.image = adapter->sourceImage();
        } else {
            return part;
        }
    }
}

bool boxesOverlap(const SeenPart& a, const SeenPart& b) {
    for (std::size_t axis = 0; axis < 5; ++axis) {
        if (a.origin[axis] >= b.origin[axis] + b.size[axis] || b.origin[axis] >= a.origin[axis] + a.size[axis]) {
            return false;
        }
    }
    return true;
}

/// How the voxels of an image lie in memory.
struct Layout {
    const std::byte* first;
    VoxelTypes type;
    Position dimensions;
    Position stride;  // bytes from one voxel to the next along each axis

    bool operator==(const Layout&) const = default;
};

/// Strides of rows that follow each other, all slices without a gap.
Position stridesOfRows(VoxelTypes type, const Position& dimensions, std::size_t rowPitch) {
    Position stride{helper::getSizeOf(type), rowPitch};
    for (std::size_t axis = 2; axis < 5; ++axis) stride[axis] = stride[axis - 1] * dimensions[axis - 1];
    return stride;
}

/// Nothing for an image that can only be reached row by row.
std::optional<Layout> layoutOf(const ImageModel& image) {
    Layout layout{nullptr, image.getDataType(), dimensionsOf(image), {}};
    if (const auto* host = dynamic_cast<const HostImage*>(&image)) {
        layout.first = static_cast<const std::byte*>(host->data());
        layout.stride = stridesOfRows(layout.type, layout.dimensions, host->rowPitchBytes());
    } else if (const auto* shown = dynamic_cast<const TarnwayImage*>(&image)) {
        if (shown->getTarnwayImageView() == nullptr) return std::nullopt;
        layout.first = static_cast<const std::byte*>(shown->getTarnwayImageView()->storage());
        for (int axis = 0; axis < 5; ++axis) layout.stride[static_cast<std::size_t>(axis)] = shown->byteStride(axis);
    } else {
        layout.first = static_cast<const std::byte*>(image.hostDataReadOnly());
        const std::size_t rowBytes = layout.dimensions[0] * helper::getSizeOf(layout.type);
        layout.stride = stridesOfRows(layout.type, layout.dimensions, rowBytes);
    }
    if (layout.first == nullptr) return std::nullopt;
    return layout;
}

/// Bytes from a box's first voxel to behind its last one.
struct Extent {
    const std::byte* begin;
    const std::byte* end;
};

Extent extentOf(const Layout& layout, const SeenPart& part) {
    Extent extent{layout.first, layout.first + helper::getSizeOf(layout.type)};
    for (std::size_t axis = 0; axis < 5; ++axis) {
        extent.begin += part.origin[axis] * layout.stride[axis];
        extent.end += (part.origin[axis] + part.size[axis] - 1) * layout.stride[axis];
    }
    return extent;
}

bool extentsOverlap(const Extent& a, const Extent& b) {
    const std::less<> before;
    return before(a.begin, b.end) && before(b.begin, a.end);
}

}  // namespace

const ImageModel& imageBehind(const ImageModel& image) {
    return *resolve(image).image;
}

bool sharesMemory(const ImageModel& a, const ImageModel& b) {
    const SeenPart partA = resolve(a);
    const SeenPart partB = resolve(b);
    if (partA.image == partB.image) return boxesOverlap(partA, partB);
    const std::optional<Layout> layoutA = layoutOf(*partA.image);
    const std::optional<Layout> layoutB = layoutOf(*partB.image);
    if (!layoutA || !layoutB) return false;
    if (*layoutA == *layoutB) return boxesOverlap(partA, partB);
    return extentsOverlap(extentOf(*layoutA, partA), extentOf(*layoutB, partB));
}

}  // namespace zel
