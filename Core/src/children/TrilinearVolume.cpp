#include "children/TrilinearVolume.h"

#include "children/ChildImages.h"

namespace zel::children {

namespace {

/// The two neighbours of a position along an axis, as offsets, and how far it is from the first.
struct Neighbours {
    Neighbours(double position, std::size_t size, std::size_t stride) {
        const auto index = static_cast<std::size_t>(position);
        first = index * stride;
        second = index + 1 < size ? first + stride : first;
        fraction = position - static_cast<double>(index);
    }

    std::size_t first;
    std::size_t second;
    double fraction;
};

double between(double a, double b, double fraction) {
    return a + fraction * (b - a);
}

}  // namespace

TrilinearVolume::TrilinearVolume(const ImageModel& image) : size_(sizeOf(image)), voxels_(size_.x * size_.y * size_.z) {
    forEachRow({size_.x, size_.y, size_.z},
               [&](const Row& row, double*) { readRow(image, row, voxels_.data() + rowNumber(size_, row) * size_.x); });
}

double TrilinearVolume::at(double x, double y, double z) const {
    const Neighbours alongX(x, size_.x, 1);
    const Neighbours alongY(y, size_.y, size_.x);
    const Neighbours alongZ(z, size_.z, size_.x * size_.y);
    const auto onRow = [&](std::size_t row) {
        return between(voxels_[row + alongX.first], voxels_[row + alongX.second], alongX.fraction);
    };
    const auto onSlice = [&](std::size_t slice) {
        return between(onRow(slice + alongY.first), onRow(slice + alongY.second), alongY.fraction);
    };
    return between(onSlice(alongZ.first), onSlice(alongZ.second), alongZ.fraction);
}

}  // namespace zel::children
