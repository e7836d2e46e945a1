#pragma once

#include "zel/BaseAlgorithm.h"
#include "zel/Property.h"
#include "zel/TemporaryImage.h"
#include "zel/Vector.h"

namespace zel {

/// Maps one range of intensities to another, linearly: inputRange.x becomes outputRange.x, inputRange.y becomes
/// outputRange.y, and what lies outside is not cut off. Where inputRange is a single value, that becomes outputRange.x.
/// A child, see ResetImage.
class ZEL_API RescaleIntensity final : public BaseAlgorithm {
public:
    /// @param parent  the run that this is a step of; null for none.
    static RefImpl<RescaleIntensity> New(AbstractPrivateImplementation* parent);
    ~RescaleIntensity() override;
    static AlgoInfo* getClassInfo();
    AlgoInfo* classInfo() const override { return getClassInfo(); }

    PropertyReadImage inputImage{"inputImage"};
    PropertySingleChoice inputRangeChoice{"inputRangeChoice", 1};  ///< 1: the range is inputRange
    Property<Vector2<double>> inputRange{"inputRange", {0, 1}};
    Property<Vector2<double>> outputRange{"outputRange", {0, 1}};
    /// 16: that of outputImage, toward zero in an image of integers, low bits kept
    PropertySingleChoice outputTypeChoice{"outputTypeChoice", 16};
    PropertyWriteImage outputImage{"outputImage"};  ///< may be the input

protected:
    void validate() const override;
    void execute() override;

private:
    explicit RescaleIntensity(AbstractPrivateImplementation* parent);
};

}  // namespace zel
