#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "Runs/OptionWords.h"
#include "zel/Property.h"

namespace zel::tool {

/// The numbers that an option takes, with commas between them.
template <typename Number>
struct NumberFormat {
    std::size_t minCount = 1;
    std::size_t maxCount = 1;
    Allowed<Number> allowed{};
    std::string example{};     ///< for errors, where it takes several numbers: "9,9"
    bool isOneForAll = false;  ///< besides maxCount numbers it takes one, which stands for all of them
};

/// Reads the numbers of a text that holds nothing else; nothing when they are too few, too many or not allowed.
/// @tparam Number  unsigned: whole numbers, without sign, fraction or space.
///                 double: also fractions, powers of ten and a minus sign. What a double cannot hold is refused.
template <typename Number>
std::optional<std::vector<Number>> parseNumbers(std::string_view text, const NumberFormat<Number>& format);

/// "two whole numbers from 1 to 2147483647, such as 9,9".
template <typename Number>
std::string toText(const NumberFormat<Number>& format);

/// Adds an option that takes numbers. Its help shows their range and unit.
/// @param set  called with the numbers when the option is given.
template <typename Number>
CLI::Option* addNumberOption(CLI::App& app, const OptionWords& words, const NumberFormat<Number>& format,
                             const std::type_identity_t<std::function<void(const std::vector<Number>&)>>& set);

}  // namespace zel::tool
