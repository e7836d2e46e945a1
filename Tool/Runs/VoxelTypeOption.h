#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "zel/ImageModel.h"

namespace zel::tool {

/// Adds an option that takes the name of a voxel type.
/// @param type  gets the type when the option is given; it has to outlive the parser.
CLI::Option* addVoxelTypeOption(CLI::App& app, const std::string& name, const std::string& description,
                                std::optional<VoxelTypes>& type);

}  // namespace zel::tool
