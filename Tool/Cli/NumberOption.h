#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::tool {

using Numbers = std::vector<unsigned>;

/// Reads exactly `count` whole numbers with commas between them and nothing else. Signs, fractions, spaces and numbers
/// above 2^32 - 1 are refused.
std::optional<Numbers> parseWholeNumbers(std::string_view text, std::size_t count);

/// Adds an option that takes `count` whole numbers.
/// @param allowed  what the option takes, for the message: "two whole numbers from 1, such as 9,9".
/// @param take     called with the numbers when the option is given.
CLI::Option* addNumberOption(CLI::App& app, const std::string& name, std::size_t count, const std::string& allowed,
                             const std::string& description, const std::function<void(const Numbers&)>& take);

}  // namespace zel::tool
