#pragma once

#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Common/InputFile.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Reads all pages of a TIFF file as the slices of a volume, or as what ImageJ's or OME's description says of them:
/// slices, channels along axis 3, time points along axis 4.
/// @throws FileError as readTiffPage does, and when the pages differ in size or type, or the description does not fit
/// them.
HostImage readTiff(InputFile& file, FileDetails& details);

}  // namespace zel::tool
