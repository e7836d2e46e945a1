#pragma once

#include <iosfwd>
#include <string_view>

#include "tarnway/DataFrameView.h"

namespace tarnway {

/// Reads a table of numbers from comma-separated text: a line of column names, then a line for each row. Blanks around
/// names and numbers and empty lines do not count; lines may end as on any system. Numbers are written with a point.
/// @param name  what messages call the text, such as the file's name.
/// @throws std::invalid_argument naming line and column, counted from 1: no header, a missing or repeated name, a row
///         with more or fewer fields than columns, a field that is no number.
TARNWAY_API DataFrameView readCsv(std::istream& text, std::string_view name);

}  // namespace tarnway
