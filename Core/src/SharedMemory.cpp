#include "SharedMemory.h"

#include <functional>

#include "zel/HostImage.h"
#include "zel/ImageModelAdapter.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"

namespace zel {

namespace {

/// The image that owns the voxels, and the box of it that is seen.
struct SeenPart {
    const ImageModel* image;
    std::array<std::size_t, 5> origin{};
    std::array<std::size_t, 5> size{};
};

SeenPart resolve(const ImageModel& image) {
    SeenPart part{&image};
    for (int axis = 0; axis < 5; ++axis) part.size[static_cast<std::size_t>(axis)] = image.getDimension(axis);
    for (;;) {
        if (const auto* proxy = dynamic_cast<const ImageModelSizeProxyBase*>(part.image)) {
            std::array<std::size_t, 5> offset{};
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

const void* deviceStorage(const ImageModel* image) {
    const auto* const shown = dynamic_cast<const TarnwayImage*>(image);
    return shown == nullptr || shown->getTarnwayImageView() == nullptr ? nullptr
                                                                       : shown->getTarnwayImageView()->storage();
}

bool extentsOverlap(const HostImage& a, const HostImage& b) {
    const auto* const beginA = static_cast<const std::byte*>(a.data());
    const auto* const beginB = static_cast<const std::byte*>(b.data());
    const std::less<> before;
    return before(beginA, beginB + b.extentBytes()) && before(beginB, beginA + a.extentBytes());
}

}  // namespace

bool sharesMemory(const ImageModel& a, const ImageModel& b) {
    const SeenPart partA = resolve(a);
    const SeenPart partB = resolve(b);
    const void* const storage = deviceStorage(partA.image);
    if (partA.image == partB.image || (storage != nullptr && storage == deviceStorage(partB.image))) {
        return boxesOverlap(partA, partB);
    }
    const auto* const hostA = dynamic_cast<const HostImage*>(partA.image);
    const auto* const hostB = dynamic_cast<const HostImage*>(partB.image);
    if (hostA == nullptr || hostB == nullptr || !extentsOverlap(*hostA, *hostB)) return false;
    // Two images over one buffer: the same layout can be told apart by boxes, any other counts as shared.
    return hostA->data() != hostB->data() || hostA->rowPitchBytes() != hostB->rowPitchBytes() ||
           boxesOverlap(partA, partB);
}

}  // namespace zel
