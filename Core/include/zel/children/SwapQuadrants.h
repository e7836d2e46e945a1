#pragma once

#include "zel/BaseAlgorithm.h"
#include "zel/Property.h"
#include "zel/TemporaryImage.h"

namespace zel {

/// Exchanges the quadrants of an image (octants of a volume) by a cyclic shift along x, y and z: the voxel at size >> 1
/// goes to 0. So the zero frequency of a centred spectrum moves to the corner, for odd sizes too: 0 1 2 3 4 becomes
/// 2 3 4 0 1. A child, see ResetImage.
class ZEL_API SwapQuadrants final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<SwapQuadrants> New(AbstractPrivateImplementation* parent);
    ~SwapQuadrants() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    PropertySingleChoice direction{"direction", 0};  ///< 0: the centre moves to the corner
    PropertyWriteImage outputImage{"outputImage"};   ///< may be the input

protected:
    void validate() const override;
    void execute() override;

private:
    explicit SwapQuadrants(AbstractPrivateImplementation* parent);
};

}  // namespace zel
