#include "Runs/TileChoice.h"

#include <stdexcept>

#include "Runs/Description.h"

namespace zel::tool {

std::string tileText(const Property<Vector2<unsigned>>& tileSize) {
    const auto [width, height] = tileSize.get();
    return "--tile " + std::to_string(width) + "," + std::to_string(height);
}

std::string tileText(const Property<Vector3<unsigned>>& tileSize) {
    const auto [width, height, depth] = tileSize.get();
    return "--tile " + std::to_string(width) + "," + std::to_string(height) + "," + std::to_string(depth);
}

void raiseTooLarge(const RunPlan& plan, const DeviceMemory& memory, const std::string& advice) {
    throw std::runtime_error("the run needs " + bytesToText(plan.peakBytes) + " of device memory, and " +
                             bytesToText(memory.free) + " of " + bytesToText(memory.total) + " are free" +
                             (advice.empty() ? "" : "; " + advice));
}

}  // namespace zel::tool
