#pragma once

#include "ImageFiles/Common/Progress.h"
#include "zel/ImageModel.h"

namespace zel::tool {

/// The statistics in an MRC header. These values mean "not known".
struct MrcStatistics {
    double minimum = 0;
    double maximum = -1;
    double mean = -2;
    double deviation = -1;  ///< root of the mean squared difference from the mean
};

/// Of all finite voxels; not known when there are none or the type is complex.
MrcStatistics mrcStatisticsOf(const ImageModel& image, const Progress& progress);

}  // namespace zel::tool
