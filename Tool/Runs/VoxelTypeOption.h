#pragma once

#include <optional>

#include "Runs/OptionWords.h"
#include "zel/VoxelTypes.h"

namespace zel::tool {

/// Adds an option that takes the name of a voxel type.
/// @param type  gets the type when the option is given; it has to outlive the parser.
CLI::Option* addVoxelTypeOption(CLI::App& app, const OptionWords& words, std::optional<VoxelTypes>& type);

}  // namespace zel::tool
