#include "zel/Measurements.h"

namespace zel {

CrossCorrelation2dMsr::CrossCorrelation2dMsr() = default;
CrossCorrelation2dMsr::~CrossCorrelation2dMsr() = default;

}  // namespace zel
