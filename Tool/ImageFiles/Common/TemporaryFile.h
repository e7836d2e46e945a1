#pragma once

#include <filesystem>
#include <string>

namespace zel::tool {

/// Makes an empty hidden file in the folder of `target`. It is locked until its descriptors are closed, which tells
/// other runs that it is in use.
/// @param path  gets its path.
/// @return its descriptor; negative, with errno set, when it cannot be made.
int makeTemporaryFile(const std::filesystem::path& target, std::string& path);

/// Removes what makeTemporaryFile made in that folder for runs that were killed since. Looks at each folder once in a
/// run; failures do not matter.
void clearTemporaryFiles(const std::filesystem::path& folder);

}  // namespace zel::tool
