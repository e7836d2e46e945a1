#pragma once

#include <string>

#include "Comparison.h"

namespace zel::bench {

/// Runs ours and each peer once, and compares all voxels of those that can be compared.
/// @returns the seconds of the peers.
/// @throws std::runtime_error that names case and peer, when they differ by more than the tolerance.
std::vector<double> runPeersOnce(const std::string& caseName, const Comparison& comparison);

}  // namespace zel::bench
