#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

#include "zel/ImageModel.h"

namespace zel::tool {

struct Peak {
    std::array<std::size_t, 3> position{};  ///< voxel
    double score = 0;
};

/// Which peaks to keep.
struct PeakSelection {
    double distance = 1;  ///< voxels; no two peaks are nearer
    std::size_t maxCount = std::numeric_limits<std::size_t>::max();
    double threshold = std::numeric_limits<double>::lowest();  ///< no peak scores less
};

/// The local maxima of a volume, best first: voxels that none of their 26 neighbours exceeds; among equal neighbours
/// the first in memory. Taken greedily: a maximum counts unless a better one lies nearer than the distance. NaN is no
/// maximum.
/// @param scores  of any real voxel type; one element along axes 3 and 4.
std::vector<Peak> findPeaks(const ImageModel& scores, const PeakSelection& selection);

}  // namespace zel::tool
