#pragma once

#include <string>

#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Mrc/MrcStatistics.h"

namespace zel::tool {

/// The header of a file whose voxels follow at once, x fastest, in this machine's byte order.
/// @param image    of a type that has a mode and of at most four axes.
/// @param details  place, cell and labels of the MRC file that the image comes from, if it does. Its first labels stay,
///                 and one that says what was done comes last.
std::string makeMrcHeader(const ImageModel& image, const MrcStatistics& statistics, const FileDetails& details);

}  // namespace zel::tool
