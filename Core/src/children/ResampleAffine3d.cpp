#include "zel/children/ResampleAffine3d.h"

#include <array>
#include <cmath>

#include "Helper/raise.h"
#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"
#include "children/TrilinearVolume.h"
#include "zel/ImagePlace.h"

namespace zel {

ZEL_DEFINE_CHILD(ResampleAffine3d)

namespace {

using tarnway::Point;
using tarnway::Transform;

constexpr const char* thisFile = "Core/src/children/ResampleAffine3d";

/// The largest rounding error of a position, in voxels.
constexpr double tolerance = 1e-6;

void requireFinite(const Property<Point>& property) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (std::isfinite(property.get()[axis])) continue;
        raise<RuntimeError>(thisFile, __LINE__, property.name(), " is ", property.get()[axis], " along axis ", axis,
                            "; it must be finite");
    }
}

void requireFinite(const Property<Transform>& property) {
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            if (std::isfinite(property.get().at(row, column))) continue;
            raise<RuntimeError>(thisFile, __LINE__, property.name(), " has ", property.get().at(row, column),
                                " in row ", row, ", column ", column, "; all elements must be finite");
        }
    }
}

/// World distance from voxel to voxel of the output.
Point stepsOf(const ResampleAffine3d& resample, const ImageSize& size) {
    const std::array<std::size_t, 3> sizes = {size.x, size.y, size.z};
    Point steps;
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        const double length = resample.upperPoint.get()[a] - resample.lowerPoint.get()[a];
        const double spacing = resample.inputImage.get()->getSpacing(axis);
        const double intervals = static_cast<double>(sizes[a] - 1);
        const bool isSpan = std::abs(length - intervals * spacing) <= tolerance * spacing;
        if (isSpan && sizes[a] > 1) {
            steps[a] = length / intervals;
        } else {
            steps[a] = isSpan ? spacing : length / static_cast<double>(sizes[a]);
        }
    }
    return steps;
}

/// A position along an axis of `size` voxels: on the voxel centre that only rounding keeps it from, and whether the
/// volume goes that far.
bool settle(double& position, std::size_t size) {
    const double nearest = std::nearbyint(position);
    if (std::abs(position - nearest) <= tolerance) position = nearest;
    return position >= 0 && position <= static_cast<double>(size - 1);
}

}  // namespace

void ResampleAffine3d::validate() const {
    children::requireVolume(inputImage);
    requireFinite(lowerPoint);
    requireFinite(upperPoint);
    requireFinite(boxMatrix);
    children::requireChoice(interpolation, 1, "trilinear");
    children::requireSize(outputSize);
    children::requireChoice(sizing, 1, "outputSize voxels share the box");
    requireFinite(toSource);
    children::requireOther(outputImage, inputImage);
}

void ResampleAffine3d::execute() {
    const ImageModel& input = *inputImage.get();
    ImageModel& output = *outputImage.get();
    const children::TrilinearVolume volume(input);
    const ImageSize size = children::toImageSize(outputSize.get());
    const Point lower = lowerPoint;
    const Point steps = stepsOf(*this, size);
    const Transform toVoxel = tarnway::inverse(imageToWorld(input)) * toSource.get() * boxMatrix.get();
    children::shapeOutput(outputImage, input, size);
    children::forEachRow(size, [&](const children::Row& row, double* voxels) {
        const double y = lower[1] + static_cast<double>(row.y) * steps[1];
        const double z = lower[2] + static_cast<double>(row.z) * steps[2];
        for (std::size_t x = 0; x < size.x; ++x) {
            Point position = toVoxel * Point(lower[0] + static_cast<double>(x) * steps[0], y, z);
            const bool inside = settle(position[0], volume.size().x) && settle(position[1], volume.size().y) &&
                                settle(position[2], volume.size().z);
            voxels[x] = inside ? volume.at(position[0], position[1], position[2]) : paddingValue.get();
        }
        children::writeRow(output, row, voxels);
    });
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        output.setOrigin(axis, lower[a]);
        if (steps[a] > 0) output.setSpacing(axis, steps[a]);
    }
}

}  // namespace zel
