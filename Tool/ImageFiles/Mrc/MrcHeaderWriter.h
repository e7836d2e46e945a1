#pragma once

#include <string>

#include "ImageFiles/Mrc/MrcStatistics.h"

namespace zel::tool {

/// The header of a file whose voxels follow at once, x fastest, in this machine's byte order.
/// @param image  of a type that has a mode and of at most three axes.
std::string makeMrcHeader(const ImageModel& image, const MrcStatistics& statistics);

}  // namespace zel::tool
