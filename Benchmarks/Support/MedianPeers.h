#pragma once

#include <memory>

#include "FilterPeers.h"

namespace zel::bench {

/// The median of a square by CImg, up to a radius of 7: beyond it takes minutes. None where the program is built
/// without it.
Peers cimgMedianPeers(const std::shared_ptr<HostImage>& image, unsigned radius);

}  // namespace zel::bench
