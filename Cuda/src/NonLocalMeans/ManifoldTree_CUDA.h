#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "Helper/manifoldTreeHeight.h"

namespace amnlm {

/// By how much manifolds are coarser than the block along each axis: a power of 2, at least 1.
inline float downSamplingFactor(float rangeSigma, float spatialSigma) {
    const float narrow = spatialSigma * 0.25f, wide = rangeSigma * 256;
    const float width = narrow > wide ? wide : narrow;
    const float factor = std::pow(2.0f, std::floor(std::log(width) / std::log(2.0f)));
    return factor > 1 ? factor : 1.0f;
}

/// Extent of a manifold along an axis; at least 1, also where the block is thinner than half the factor.
inline std::int32_t coarseExtent(std::int32_t extent, float factor) {
    return std::max(1, static_cast<std::int32_t>(std::floor(static_cast<float>(extent) / factor + 0.5f)));
}

/// Depth of the tree's leaves, that of its root being 1; at least 4.
inline int treeHeight(float rangeSigma, float spatialSigma) {
    return static_cast<int>(zel::manifoldTreeHeight(rangeSigma, spatialSigma));
}

}  // namespace amnlm
