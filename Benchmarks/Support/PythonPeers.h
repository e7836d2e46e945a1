#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "Comparison.h"

/// What Python users have for the work of a case, in a Python process that runs and times it (Benchmarks/Python).
/// None where the virtual environment is missing that ./bench makes.
namespace zel::bench {

/// @param work        one of those that peers.py lists.
/// @param parameters  those of the function there. Its comparable results have the first image's type and size.
void addPythonPeers(Comparison& comparison, const std::string& work,
                    const std::vector<std::shared_ptr<HostImage>>& images, const nlohmann::json& parameters);

/// The first of these peers, each run being the first one of a process.
void addFirstRunOfPythonPeer(Comparison& comparison, const std::string& work,
                             const std::vector<std::shared_ptr<HostImage>>& images, const nlohmann::json& parameters);

}  // namespace zel::bench
