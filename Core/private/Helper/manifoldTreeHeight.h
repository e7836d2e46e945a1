#pragma once

#include <algorithm>
#include <cmath>

namespace zel {

/// Levels of the tree of manifolds, the root being one: fewer for a wide range, more for a wide neighbourhood. A float,
/// so that heights beyond any integer can be refused.
inline float manifoldTreeHeight(float rangeSigma, float spatialSigma) {
    const float levels = std::ceil((1 - rangeSigma) * std::floor(std::log(spatialSigma) / std::log(2.0F) - 1));
    return std::max(2.0F, levels) + 2;
}

}  // namespace zel
