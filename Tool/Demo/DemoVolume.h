#pragma once

#include "zel/HostImage.h"

namespace zel::tool {

/// A volume of 96 x 96 x 48 uint16 in noise: a ball, a hollow shell and a slanted rod. The same on every machine.
HostImage makeDemoVolume();

}  // namespace zel::tool
