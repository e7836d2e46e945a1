#pragma once

namespace zel::tool {

/// The whole program: parses the arguments, runs the subcommand and answers the exit code. 0 success, 1 failure, 2
/// wrong usage, 128 + number after a signal. Failures have put one line on standard error.
int runApplication(int argc, const char* const* argv) noexcept;

}  // namespace zel::tool
