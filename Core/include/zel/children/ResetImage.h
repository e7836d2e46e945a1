#pragma once

#include "zel/BaseAlgorithm.h"
#include "zel/Property.h"
#include "zel/TemporaryImage.h"

namespace zel {

/// Sets every voxel to one value. As all children, an algorithm that the core carries out itself on the host: no runner
/// is needed, images of every real voxel type will do wherever they lie, and it may work in place. Made with the run
/// that it is a step of, and run by it with runChildAlgo.
class ZEL_API ResetImage final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<ResetImage> New(AbstractPrivateImplementation* parent);
    ~ResetImage() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};  ///< gives the output its size, type and place
    Property<double> value{"value"};             ///< toward zero in an image of integers, low bits kept
    PropertyWriteImage outputImage{"outputImage"};

protected:
    void validate() const override;
    void execute() override;

private:
    explicit ResetImage(AbstractPrivateImplementation* parent);
};

}  // namespace zel
