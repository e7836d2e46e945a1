#pragma once

#include "zel/HostImage.h"

namespace zel::tool {

/// A picture of 512 x 512 uint8 with something for every filter: a gradient, shapes with sharp edges, stripes that grow
/// finer, lone bright and dark pixels, and noise. The same on every machine.
HostImage makeDemoPicture();

}  // namespace zel::tool
