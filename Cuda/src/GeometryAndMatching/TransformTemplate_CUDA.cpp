#include "TransformTemplate_CUDA.h"

#include <algorithm>
#include <cmath>

#include "Helper/raise.h"
#include "zel/ImagePlace.h"

namespace zel::cuda {

namespace {

using tarnway::Point;
using tarnway::Transform;

Vector3<int> toVector(const Size3& size) {
    return {static_cast<int>(size[0]), static_cast<int>(size[1]), static_cast<int>(size[2])};
}

void setSpacing(ImageModel& image, const Spacing3& spacing) {
    for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, spacing[static_cast<std::size_t>(axis)]);
}

void resize(TemplateTransformation& context, const ImageModel& source, ImageModel& destination) {
    const TemplateTransformationInfo& info = context.info;
    const Spacing3 spacing = spacingOf(source);
    if (!info.hasScale && spacing == context.imageSpacing) {
        context.implementation->nextStep();
        return;
    }
    // A turn brings the image to the other voxel size by itself.
    const Size3 size =
        scaledSize(sizeOf(source), info, info.hasRotation ? context.imageSpacing : spacing, context.imageSpacing);

    ImageModel& output = info.hasRotation ? *context.resizedTemplate->getImageModel() : destination;
    context.resizeAlgorithm->inputImage = &source;
    context.resizeAlgorithm->outputSize = toVector(size);
    context.resizeAlgorithm->outputImage = &output;
    context.implementation->runChildAlgo(context.resizeAlgorithm.get());
    setSpacing(output, info.hasRotation ? spacing : context.imageSpacing);
}

/// The inverse of the row's rotation about a point: from the turned image to the one that it shows.
Transform turnBackAbout(const Point& centre, const TemplateTransformationInfo& info) {
    const tarnway::Matrix<double, 3> rotation = rotationMatrix(info);
    Transform back = Transform::identity();
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) back.setAt(row, column, rotation.at(column, row));
    }
    return tarnway::translation(centre) * back * tarnway::translation(Point(-centre[0], -centre[1], -centre[2]));
}

/// A box in the world, and the voxels in it.
struct Box {
    Point lower;
    Point upper;
    Size3 size;
};

/// The voxels of the searched image's size that hold the turned image whole.
/// @param toWorld  from voxels of the image to the world, where it was turned.
Box boundingBox(const Transform& toWorld, const Point& last, const Spacing3& imageSpacing) {
    Box box{toWorld * Point(0, 0, 0), toWorld * Point(0, 0, 0), {}};
    for (unsigned corner = 1; corner < 8; ++corner) {
        const Point at = toWorld * Point((corner & 1U) != 0 ? last[0] : 0, (corner & 2U) != 0 ? last[1] : 0,
                                         (corner & 4U) != 0 ? last[2] : 0);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            box.lower[axis] = std::min(box.lower[axis], at[axis]);
            box.upper[axis] = std::max(box.upper[axis], at[axis]);
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        // From voxel centres to whole voxels.
        box.upper[axis] += imageSpacing[axis];
        box.size[axis] =
            static_cast<std::uint32_t>(std::round((box.upper[axis] - box.lower[axis]) / imageSpacing[axis]));
    }
    return box;
}

void turn(TemplateTransformation& context, const ImageModel& source, ImageModel& destination) {
    const TemplateTransformationInfo& info = context.info;
    if (!info.hasRotation) {
        context.implementation->nextStep();
        return;
    }
    const ImageModel& turned = info.hasScale ? *context.resizedTemplate->getImageModel() : source;
    const Transform toWorld = imageToWorld(turned);
    Point centre;
    Point last;
    for (int axis = 0; axis < 3; ++axis) {
        const auto size = static_cast<double>(turned.getDimension(axis));
        centre[static_cast<std::size_t>(axis)] = size * 0.5 - 0.5;
        last[static_cast<std::size_t>(axis)] = size - 1;
    }
    const Transform toSource = turnBackAbout(toWorld * centre, info);
    Box box{Point(0, 0, 0), toWorld * last, sizeOf(source)};
    if (context.maskFollows || info.hasScale) {
        box = boundingBox(tarnway::inverse(toSource) * toWorld, last, context.imageSpacing);
    }

    ResampleAffine3d& resample = *context.resampleAlgorithm;
    resample.inputImage = &turned;
    resample.lowerPoint = box.lower;
    resample.upperPoint = box.upper;
    resample.boxMatrix = Transform::identity();
    resample.interpolation = 1;
    resample.outputSize = toVector(box.size);
    resample.sizing = 1;
    resample.paddingValue = 0.0;
    resample.toSource = toSource;
    resample.outputImage = &destination;
    context.implementation->runChildAlgo(&resample);
}

void requireFits(const Size3& size, const Size3& room) {
    if (size[0] <= room[0] && size[1] <= room[1] && size[2] <= room[2]) return;
    raise<RuntimeError>("Cuda/src/GeometryAndMatching/CudaTemplateMatching3d_CUDA", __LINE__,
                        "The transformation generates a greater template (", size[0], " x ", size[1], " x ", size[2],
                        " > ", room[0], " x ", room[1], " x ", room[2], ").");
}

}  // namespace

Size3 scaledSize(const Size3& size, const TemplateTransformationInfo& info, const Spacing3& from, const Spacing3& to) {
    return {scaledLength(size[0], info.scaleX, from[0] / to[0]), scaledLength(size[1], info.scaleY, from[1] / to[1]),
            scaledLength(size[2], info.scaleZ, from[2] / to[2])};
}

void transformTemplate(TemplateTransformation& context, const ImageModel& source, ImageModel& destination) {
    resize(context, source, destination);
    turn(context, source, destination);
    context.currentTemplateSize = sizeOf(destination);
    requireFits(context.currentTemplateSize, context.paddedSize);
}

}  // namespace zel::cuda
