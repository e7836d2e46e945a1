#pragma once

#include "zel/BaseAlgorithm.h"
#include "zel/Property.h"
#include "zel/Scalar.h"
#include "zel/TemporaryImage.h"

namespace zel {

/// The standard deviation of all voxels. A child, see ResetImage.
class ZEL_API IntensityStatistics final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<IntensityStatistics> New(AbstractPrivateImplementation* parent);
    ~IntensityStatistics() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    /// Of the population (divided by the number of voxels), in double whatever the voxel type. The same bits on any
    /// number of threads.
    Property<Scalar> outputStandardDeviation{"outputStandardDeviation"};

protected:
    void validate() const override;
    void execute() override;

private:
    explicit IntensityStatistics(AbstractPrivateImplementation* parent);
};

}  // namespace zel
