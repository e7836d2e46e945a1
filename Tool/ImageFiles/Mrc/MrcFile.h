#pragma once

#include "ImageFiles/Common/ImageFormat.h"

namespace zel::tool {

const ImageFormat& mrcFormat();

}  // namespace zel::tool
