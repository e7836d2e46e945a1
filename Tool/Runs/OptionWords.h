#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zel::tool {

/// The words that an option's help and errors are made of.
struct OptionWords {
    std::string name;           ///< "--kernel"
    std::string values{};       ///< its values, in the help: "X,Y"; of a choice, empty for "host|device"
    std::string description{};  ///< in the help
    std::string defaultText{};  ///< what happens without it, in the help: "3", "the input's type"; may be empty
    bool isRequired = false;
};

/// Adds an option with the help "description (range; default 3)".
/// @param range  which values it takes; may be empty.
/// @param parse  takes the value's text; throws what wrongValue makes when it is wrong.
CLI::Option* addOption(CLI::App& app, const OptionWords& words, const std::string& range,
                       const std::function<void(const std::string&)>& parse);

/// "--kernel is '9', but takes two whole numbers".
CLI::ValidationError wrongValue(const std::string& name, const std::string& text, const std::string& allowed);

}  // namespace zel::tool
