#include "Npp/Median/MedianGraph.h"

#include <bit>

namespace zel::host {
namespace {

int powerOfTwoUpTo(int limit) {
    return static_cast<int>(std::bit_floor(static_cast<unsigned>(limit)));
}

}  // namespace

NppiSize MedianGraph::tileFor(NppiSize mask, int maxWidth) {
    constexpr int maxSide = 16;
    const int width = powerOfTwoUpTo(std::min({(mask.width + 1) / 2, maxWidth, maxSide}));
    const int height = mask.height == 1 ? 1 : powerOfTwoUpTo(std::clamp(mask.height / 2, 2, maxSide));
    return {width, height};
}

}  // namespace zel::host
