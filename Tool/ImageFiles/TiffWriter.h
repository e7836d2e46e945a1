#pragma once

#include "ImageFiles/AtomicFile.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Whether an image of that type and size makes a file beyond the 4 GiB of classic TIFF.
bool needsBigTiff(VoxelTypes type, const ImageSize& size);

/// Writes a volume with a page for each slice, without compression, in this machine's byte order.
void writeTiff(AtomicFile& file, const ImageModel& image);

}  // namespace zel::tool
