#pragma once

#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/Progress.h"
#include "zel/ImageModel.h"

namespace zel::tool {

/// Writes one slice of uint8 or uint16 as a grey picture.
void writePng(AtomicFile& file, const ImageModel& image, const Progress& progress);

}  // namespace zel::tool
