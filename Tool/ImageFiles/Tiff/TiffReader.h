#pragma once

#include "ImageFiles/Common/InputFile.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Reads all pages of a TIFF file as the slices of a volume, rows in the order of the file; the orientation tag is
/// ignored.
/// @throws FileError as readTiffPage does, and when the pages differ in size or type.
HostImage readTiff(InputFile& file);

}  // namespace zel::tool
