#pragma once

namespace zel::tool {

/// The whole program: parses the arguments and runs the subcommand. Each failure prints one line on standard error.
/// @return the exit code: 0 success, 1 failure, 2 wrong usage, 128 + its number after a signal.
int runApplication(int argc, const char* const* argv) noexcept;

}  // namespace zel::tool
