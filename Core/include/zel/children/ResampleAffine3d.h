#pragma once

#include "tarnway/Transform.h"
#include "zel/BaseAlgorithm.h"
#include "zel/Property.h"
#include "zel/TemporaryImage.h"

namespace zel {

/// Samples a volume anew on the voxels of a box in the world, each taken from where an affine map leads. A child, see
/// ResetImage.
///
/// Along an axis, output voxel k lies in the world at lowerPoint + k step. boxMatrix and then toSource take that point
/// to the world position that it shows, and the input's place in the world (imageToWorld) tells where among its voxels
/// that is. There the input is read by trilinear interpolation; beyond its outermost voxel centres the output has the
/// padding value. A position within 1e-6 of a voxel of a voxel centre counts as on it.
///
/// The step follows from what the box is, along each axis by itself:
/// - from the first voxel centre to the last, when upperPoint - lowerPoint is, within 1e-6 of a voxel, the span of
///   outputSize voxels of the input's spacing: step = (upperPoint - lowerPoint) / (outputSize - 1);
/// - whole voxels otherwise: step = (upperPoint - lowerPoint) / outputSize.
///
/// Example: a row 1 2 3 4 of spacing 1 at the origin, lowerPoint (0, 0, 0), outputSize (4, 1, 1), padding value 0. With
/// upperPoint (3, 0, 0) the step along x is 3 / 3, with (4, 1, 1) it is 4 / 4: both times the identity gives 1 2 3 4,
/// and toSource = translation by (0.5, 0, 0) gives 1.5 2.5 3.5 0. So the identity reproduces its input in both forms,
/// and a turn by 90 degrees moves voxels exactly.
class ZEL_API ResampleAffine3d final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<ResampleAffine3d> New(AbstractPrivateImplementation* parent);
    ~ResampleAffine3d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};         ///< one element along axes 3 and 4
    Property<tarnway::Point> lowerPoint{"lowerPoint"};  ///< world, in the images' unit of length
    Property<tarnway::Point> upperPoint{"upperPoint"};  ///< world
    Property<tarnway::Transform> boxMatrix{"boxMatrix", tarnway::Transform::identity()};
    PropertySingleChoice interpolation{"interpolation", 1};  ///< 1: trilinear
    Property<Vector3<int>> outputSize{"outputSize"};         ///< voxels along each axis, at least 1
    PropertySingleChoice sizing{"sizing", 1};                ///< 1: outputSize voxels share the box
    Property<double> paddingValue{"paddingValue", 0};
    Property<tarnway::Transform> toSource{"toSource", tarnway::Transform::identity()};  ///< world to world
    /// Not the input. Its origin becomes lowerPoint, its spacing the step.
    PropertyWriteImage outputImage{"outputImage"};

protected:
    void validate() const override;
    void execute() override;

private:
    explicit ResampleAffine3d(AbstractPrivateImplementation* parent);
};

}  // namespace zel
