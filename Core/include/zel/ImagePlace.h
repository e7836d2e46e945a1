#pragma once

#include "tarnway/Transform.h"
#include "zel/ImageModel.h"

namespace zel {

/// From voxel positions of an image to the world: origin, orientation and spacing in one, T(origin) O S.
ZEL_API tarnway::Transform imageToWorld(const ImageModel& image);

}  // namespace zel
