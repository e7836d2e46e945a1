#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// What manual and completions tell of an option, taken from its parser.

namespace zel::tool {

/// The options of a command, and its positionals, in the order of its help.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);
std::vector<const CLI::Option*> positionalsOf(const CLI::App& app);

/// Whether the option stands alone, without a value.
bool isFlag(const CLI::Option& option);

/// The words that the option takes, where its help says "host|device"; the voxel types, where it says "TYPE". Empty for
/// options that take something else.
std::vector<std::string> wordsOf(const CLI::Option& option);

/// Whether the option takes the name of a file: "FILE", "ROWS.csv".
bool takesFile(const CLI::Option& option);

/// The text with a backslash in front of each of the characters.
std::string escaped(const std::string& text, const std::string& characters);

}  // namespace zel::tool
