#pragma once

#include "ImageFiles/InputFile.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Reads all pages of a TIFF file as the slices of a volume, rows in the order of the file whatever way up they are
/// to be shown.
/// @throws FileError as readTiffPage does, and when the pages differ in size or type.
HostImage readTiff(InputFile& file);

}  // namespace zel::tool
