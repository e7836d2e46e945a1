#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace zel::tool {

/// Writes a line on standard output.
/// @throws std::runtime_error when it does not take it, as when a disk is full.
void printLine(const std::string& line);

/// The same with an object of JSON, on one line. File names that are no UTF-8 get replacement characters.
void printJson(const nlohmann::ordered_json& object);

/// One line on standard error: "zel: " and the message, whatever line ends the message holds.
/// Takes no memory, since the lack of it may be the message.
void printError(std::string_view message) noexcept;

}  // namespace zel::tool
