#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace zel::tool {

/// Gives standard output to a result, such as an image: the functions below then write on standard error instead.
/// @throws std::runtime_error when another result has it.
void takeStandardOutput();

/// Writes a line on standard output.
/// @throws std::runtime_error when the write fails, as on a full disk.
void printLine(const std::string& line);

/// Writes a JSON object on standard output, on one line. Bytes of file names that are not UTF-8 become replacement
/// characters. @throws as printLine does.
void printJson(const nlohmann::ordered_json& object);

/// Writes one line on standard error: "zel: " and the message, its line ends replaced by spaces.
/// Allocates nothing, since the message may be that memory is short.
void printError(std::string_view message) noexcept;

}  // namespace zel::tool
