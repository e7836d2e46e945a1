#pragma once

#include <string>
#include <vector>

#include "tarnway/DataFrameView.h"

namespace zel::tool {

/// Reads a table of numbers: comma-separated text with a line of column names.
/// @throws FileError naming line and column of what is wrong, and Interrupted after a signal.
tarnway::DataFrameView readTableFile(const std::string& path);

/// Writes one, with numbers that read back as the same; it appears under its name only when it is complete.
/// @param columns  at least one, all of one length.
/// @throws FileError, and Interrupted after a signal; an earlier file of that name then stays unchanged.
void writeTableFile(const std::string& path, const std::vector<tarnway::DataFrameView::Column>& columns);

/// Checks early that writeTableFile can write a file of that name. @throws FileError.
void checkTableWritable(const std::string& path);

}  // namespace zel::tool
