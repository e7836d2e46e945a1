#pragma once

#include <string>

namespace zel::bench {

/// With it and a contender's name as arguments this program does nothing but a first run, and prints its seconds.
inline constexpr char firstRunCommand[] = "first-run";

/// @returns the program's exit code.
int printFirstRun(const std::string& contender);

}  // namespace zel::bench
