#pragma once

#include "zel/ImageModel.h"

namespace zel::tool {

/// The numbers about its voxels that an MRC header has. As they are here they mean: not known.
struct MrcStatistics {
    double minimum = 0;
    double maximum = -1;
    double mean = -2;
    double deviation = -1;  ///< root of the mean squared difference from the mean
};

/// Of all finite voxels; not known when there is none.
MrcStatistics mrcStatisticsOf(const ImageModel& image);

}  // namespace zel::tool
