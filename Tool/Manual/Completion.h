#pragma once

#include <CLI/CLI.hpp>
#include <string>

// Scripts that complete command lines of the program: commands, options, the words that an option takes, file names.

namespace zel::tool {

std::string bashCompletion(const CLI::App& program);
std::string zshCompletion(const CLI::App& program);

}  // namespace zel::tool
