#include "Demo/DemoVolume.h"

#include <cmath>
#include <cstdint>
#include <random>

namespace zel::tool {

namespace {

constexpr int width = 96, height = 96, depth = 48;

double distanceTo(double x, double y, double z, double centreX, double centreY, double centreZ) {
    return std::sqrt((x - centreX) * (x - centreX) + (y - centreY) * (y - centreY) + (z - centreZ) * (z - centreZ));
}

double sceneValue(int x, int y, int z) {
    if (distanceTo(x, y, z, 30, 30, 24) < 16) return 40000;
    if (std::abs(distanceTo(x, y, z, 64, 40, 24) - 17) < 2) return 50000;
    // A rod that climbs through the slices as it goes along x.
    if (distanceTo(0, y, z, 0, 76, 8 + x / 3.0) < 5) return 60000;
    return 12000;
}

}  // namespace

HostImage makeDemoVolume() {
    HostImage volume(VoxelTypes::uint16, {width, height, depth});
    auto* voxel = static_cast<std::uint16_t*>(volume.data());
    std::mt19937 random(21);  // NOLINT(bugprone-random-generator-seed): the same volume every time
    for (int z = 0; z < depth; ++z) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const auto noise = static_cast<double>(random() % 10001) - 5000;
                *voxel++ = static_cast<std::uint16_t>(sceneValue(x, y, z) + noise);
            }
        }
    }
    return volume;
}

}  // namespace zel::tool
