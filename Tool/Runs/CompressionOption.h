#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "ImageFiles/Common/FileDetails.h"

namespace zel::tool {

/// Adds --compression, which sets details.compression. Without a TIFF file among the outputs it is wrong usage.
/// @param outputs  gives their names when the rest has been parsed; empty ones do not count.
void addCompressionOption(CLI::App& app, FileDetails& details, std::function<std::vector<std::string>()> outputs);

}  // namespace zel::tool
