#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

#include "Commands/Command.h"

namespace zel::tool {

/// The program's parser, with a subcommand for each of the commands, which have to outlive it.
std::unique_ptr<CLI::App> makeParser(const std::vector<std::unique_ptr<Command>>& commands);

/// The whole program: parses the arguments and runs the subcommand. Each failure prints one line on standard error.
/// @return the exit code: 0 success, 1 failure, 2 wrong usage, 128 + its number after a signal.
int runApplication(int argc, const char* const* argv) noexcept;

}  // namespace zel::tool
