#pragma once

#include "zel/BaseAlgorithm.h"
#include "zel/Measurements.h"
#include "zel/Property.h"
#include "zel/TemporaryImage.h"

namespace zel {

/// The lowest and the highest intensity of an image, exact. NaN is ignored; an image that holds nothing else gives NaN
/// for both. A child, see ResetImage.
class ZEL_API IntensityExtrema final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<IntensityExtrema> New(AbstractPrivateImplementation* parent);
    ~IntensityExtrema() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    Property<IntensityExtremaMsr*> outputMeasurement{"outputMeasurement"};

protected:
    void validate() const override;
    void execute() override;

private:
    explicit IntensityExtrema(AbstractPrivateImplementation* parent);
};

}  // namespace zel
