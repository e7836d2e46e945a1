#pragma once

#include "ImageFiles/Common/ImageFormat.h"

namespace zel::tool {

const ImageFormat& tiffFormat();

}  // namespace zel::tool
