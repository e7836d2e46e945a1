#pragma once

#include "Kernels/FindPositionMaxiamalIntensity.h"
#include "zel/Measurements.h"

namespace zel::cuda {

/// The four numbers that a run reports, to a measurement that may be missing.
class Measurement {
public:
    explicit Measurement(CrossCorrelation2dMsr* measurement) : measurement_(measurement) {}

    void resize() {
        if (measurement_ == nullptr) return;
        const std::size_t one = 1;
        const brontal_object_model::TupleX shape(&one, 1);
        measurement_->minimumCorrelation.resize(shape);
        measurement_->maximumCorrelation.resize(shape);
        measurement_->bestPositionX.resize(shape);
        measurement_->bestPositionY.resize(shape);
    }

    void write(const PositionMaximalIntensityInfo& best) {
        if (measurement_ == nullptr) return;
        *measurement_->minimumCorrelation.data() = best.minimum;
        *measurement_->maximumCorrelation.data() = best.maximum;
        *measurement_->bestPositionX.data() = best.positionX;
        *measurement_->bestPositionY.data() = best.positionY;
    }

private:
    CrossCorrelation2dMsr* measurement_;
};

}  // namespace zel::cuda
