#pragma once

#include "ImageFiles/Common/InputFile.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// Reads a grey picture: of 16 bits as uint16, of up to 8 as uint8 over the full range.
/// @throws FileError when the file is not PNG, is damaged, or has colours or transparency.
HostImage readPng(InputFile& file);

}  // namespace zel::tool
