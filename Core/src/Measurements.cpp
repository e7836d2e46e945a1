#include "zel/Measurements.h"

namespace zel {

CrossCorrelation2dMsr::CrossCorrelation2dMsr() = default;
CrossCorrelation2dMsr::~CrossCorrelation2dMsr() = default;

IntensityExtremaMsr::IntensityExtremaMsr() {
    const std::size_t one[] = {1, 1, 1};
    minimum_tag.resize(brontal_object_model::TupleX(one, 3));
    maximum_tag.resize(brontal_object_model::TupleX(one, 3));
}
IntensityExtremaMsr::~IntensityExtremaMsr() = default;

std::shared_ptr<IntensityExtremaMsr> IntensityExtremaMsr::New() {
    return std::shared_ptr<IntensityExtremaMsr>(new IntensityExtremaMsr());
}

}  // namespace zel
