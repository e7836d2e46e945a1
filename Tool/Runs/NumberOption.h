#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zel::tool {

using Numbers = std::vector<unsigned>;
using RealNumbers = std::vector<double>;

/// How many numbers an option takes.
struct NumberCount {
    NumberCount(std::size_t count) : least(count), most(count) {}  // NOLINT: a count is one
    NumberCount(std::size_t leastCount, std::size_t mostCount) : least(leastCount), most(mostCount) {}

    std::size_t least;
    std::size_t most;
};

/// Reads so many numbers with commas between them and nothing else.
/// @tparam Number  unsigned: whole numbers; signs, fractions, spaces and numbers above 2^32 - 1 are refused.
///                 double: also fractions, powers of ten, a minus sign, "inf" and "nan"; what a double cannot hold is
///                 refused.
template <typename Number>
std::optional<std::vector<Number>> parseNumbers(std::string_view text, const NumberCount& count);

/// Adds an option that takes numbers.
/// @param allowed  what the option takes, for the message: "two whole numbers from 1, such as 9,9".
/// @param take     called with the numbers when the option is given.
template <typename Number = unsigned>
CLI::Option* addNumberOption(CLI::App& app, const std::string& name, const NumberCount& count,
                             const std::string& allowed, const std::string& description,
                             const std::type_identity_t<std::function<void(const std::vector<Number>&)>>& take);

}  // namespace zel::tool
