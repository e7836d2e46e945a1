#pragma once

#include <cstdint>

#include "zel/Vector.h"

namespace zel {

/// What a run is going to do, known without doing it.
struct RunPlan {
    std::uint64_t steps = 0;           ///< of progress
    Vector3<unsigned> tiles{1, 1, 1};  ///< along x, y and z
    Vector3<unsigned> tileSize{};      ///< voxels of the largest tile, with its margins
    /// Device memory that the run takes for itself, at the most. Images that lie on the device are not part of it. What
    /// a runtime adds for rows of a round length or for pages of memory is not counted.
    std::uint64_t peakBytes = 0;
};

}  // namespace zel
