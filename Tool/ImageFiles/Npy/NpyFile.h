#pragma once

#include "ImageFiles/Common/ImageFormat.h"

namespace zel::tool {

const ImageFormat& npyFormat();

}  // namespace zel::tool
