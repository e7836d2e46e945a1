#include "zel/ImagePlace.h"

namespace zel {

tarnway::Transform imageToWorld(const ImageModel& image) {
    ImageModel::Orientation orientation;
    image.getOrientation(orientation);
    tarnway::Transform result = tarnway::Transform::identity();
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        for (std::size_t row = 0; row < 3; ++row) result.setAt(row, a, orientation[a][row] * image.getSpacing(axis));
        result.setAt(a, 3, image.getOrigin(axis));
    }
    return result;
}

}  // namespace zel
