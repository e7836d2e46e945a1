#pragma once

#include "ImageFiles/Common/ImageFormat.h"

namespace zel::tool {

const ImageFormat& pngFormat();

}  // namespace zel::tool
