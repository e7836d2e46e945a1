#pragma once

#include <string>

#include "zel/HostImage.h"

namespace zel::bench {

/// How long the stages of the non-local means filter take on two threads, with patches of radius 2. Each is run by
/// itself through its module, on the image in one block; those of a manifold are timed once and counted as often as the
/// tree does them. What remains of the tree is weights, clusters and their directions.
std::string nonLocalMeansStages(const HostImage& image, float rangeSigma, float spatialSigma);

}  // namespace zel::bench
