#pragma once

#include <string>
#include <vector>

#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Common/Progress.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// The names of the compressions that libtiff has here, of those that writeTiff takes.
std::vector<std::string> tiffCompressions();

/// Whether a file of such an image is larger than the 4 GiB of classic TIFF.
bool needsBigTiff(VoxelTypes type, const ImageSize& size);

/// Writes an image as a page for each slice, channel (axis 3) and time point (axis 4), in this machine's byte order,
/// compressed as the details say.
void writeTiff(AtomicFile& file, const ImageModel& image, const FileDetails& details, const Progress& progress);

}  // namespace zel::tool
