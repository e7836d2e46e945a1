#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "ImageFiles/Common/FileDetails.h"

namespace zel::tool {

/// Adds --compression, which sets details.compression. Without a TIFF file among the outputs it is wrong usage.
/// @param outputs  names of files, which the parser sets too; empty ones do not count.
void addCompressionOption(CLI::App& app, FileDetails& details, const std::vector<const std::string*>& outputs);

}  // namespace zel::tool
