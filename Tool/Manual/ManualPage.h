#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zel::tool {

/// The manual page of the program, zel(1), in the language of man(7): its commands and exit codes.
std::string manualPage(const CLI::App& program);

/// The manual page of one of its commands, such as zel-box-filter(1).
std::string manualPage(const CLI::App& program, const CLI::App& command);

}  // namespace zel::tool
