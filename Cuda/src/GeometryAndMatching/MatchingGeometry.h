#pragma once

#include <array>
#include <cstddef>

#include "zel/ImageModel.h"
#include "zel/ImageModelSizeProxy.h"

namespace zel::cuda {

using Size3 = std::array<std::size_t, 3>;
using Spacing3 = std::array<double, 3>;

inline Size3 sizeOf(const ImageModel& image) {
    return {image.getDimension(0), image.getDimension(1), image.getDimension(2)};
}

inline Spacing3 spacingOf(const ImageModel& image) {
    return {image.getSpacing(0), image.getSpacing(1), image.getSpacing(2)};
}

/// A box of an image.
template <typename Image>
ImageModelSizeProxy partOf(Image& image, const Size3& origin, const Size3& size) {
    return {&image, origin[0], size[0], origin[1], size[1], origin[2], size[2], 0, 1, 0, 1};
}

/// An image moved to the world's origin, along its axes: where a template or a mask was cut out does not matter.
class AtWorldOrigin final : public ImageModelSizeProxy {
public:
    explicit AtWorldOrigin(const ImageModel& image) : ImageModelSizeProxy(partOf(image, {0, 0, 0}, sizeOf(image))) {}

    double getOrigin(const int&) const override { return 0; }
    void getOrientation(Orientation& out) const override {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            for (std::size_t k = 0; k < 3; ++k) out[axis][k] = axis == k ? 1 : 0;
        }
    }
};

}  // namespace zel::cuda
