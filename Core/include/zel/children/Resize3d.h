#pragma once

#include "zel/BaseAlgorithm.h"
#include "zel/Property.h"
#include "zel/TemporaryImage.h"

namespace zel {

/// Samples a volume anew on another number of voxels that fill the same space. A child, see ResetImage.
///
/// Voxels are boxes: along an axis of n voxels, the centre of output voxel k of m lies at (k + 0.5) n / m - 0.5. Beyond
/// the outermost centres the outermost voxel goes on. So the row 0 10 20 becomes, on six voxels, with positions -0.25,
/// 0.25, 0.75, 1.25, 1.75 and 2.25: 0 2.5 7.5 12.5 17.5 20; and on one voxel, at position 1: 10.
class ZEL_API Resize3d final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<Resize3d> New(AbstractPrivateImplementation* parent);
    ~Resize3d() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertySingleChoice interpolation{"interpolation", 1};  ///< 1: trilinear
    PropertyReadImage inputImage{"inputImage"};              ///< one element along axes 3 and 4
    Property<Vector3<int>> outputSize{"outputSize"};         ///< voxels along each axis, at least 1
    /// Not the input. Its voxel size becomes the input's by as much as the voxels grew.
    PropertyWriteImage outputImage{"outputImage"};

protected:
    void validate() const override;
    void execute() override;

private:
    explicit Resize3d(AbstractPrivateImplementation* parent);
};

}  // namespace zel
