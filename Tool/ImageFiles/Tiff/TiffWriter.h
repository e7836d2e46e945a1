#pragma once

#include "ImageFiles/Common/AtomicFile.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Whether a file of such an image is larger than the 4 GiB of classic TIFF.
bool needsBigTiff(VoxelTypes type, const ImageSize& size);

/// Writes a volume as a page for each slice, without compression, in this machine's byte order.
void writeTiff(AtomicFile& file, const ImageModel& image);

}  // namespace zel::tool
