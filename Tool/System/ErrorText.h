#pragma once

#include <string>

namespace zel::tool {

/// The system's words for an errno value, begun in lower case to stand inside a sentence.
std::string systemErrorText(int errorNumber);

}  // namespace zel::tool
