#include "zel/ImageModel.h"

#include <algorithm>

namespace zel {

ImageModel::~ImageModel() = default;

void ImageModel::enforceSameCharacteristics(const ImageModel* other, const int& axes) {
    constexpr int placedAxes = 3;
    if (axes >= placedAxes) {
        Orientation orientation;
        other->getOrientation(orientation);
        setOrientation(orientation);
    }
    const int last = std::min(axes, placedAxes);
    for (int axis = 0; axis < last; ++axis) setSpacing(axis, other->getSpacing(axis));
    // Behind the others, on which the origin of a part of an image depends.
    for (int axis = 0; axis < last; ++axis) setOrigin(axis, other->getOrigin(axis));
}

}  // namespace zel
