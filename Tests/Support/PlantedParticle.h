#pragma once

#include <span>

#include "TestImages.h"

namespace zel::test {

/// A particle of random voxels and a volume of weaker ones to plant it in.
struct PlantedParticle {
    PlantedParticle() {
        for (float& voxel : std::span(voxels<float>(volume), 24 * 16 * 14)) voxel *= 0.1F;
    }

    /// @param isTurned  by 90 degrees about z: x goes to y.
    void plantAt(const std::array<std::size_t, 3>& origin, bool isTurned) {
        for (std::size_t i = 0; i < 125; ++i) {
            const std::size_t x = i % 5, y = i / 5 % 5,
                              row = (i / 25 + origin[2]) * 16 + origin[1] + (isTurned ? x : y);
            voxels<float>(volume)[row * 24 + origin[0] + (isTurned ? 4 - y : x)] = voxels<float>(particle)[i];
        }
    }

    HostImage particle = randomImage<float>({5, 5, 5}, 4), volume = randomImage<float>({24, 16, 14}, 5);
};

}  // namespace zel::test
