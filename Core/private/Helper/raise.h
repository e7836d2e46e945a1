#pragma once

#include <cstdint>
#include <sstream>

#include "zel/Exceptions.h"

namespace zel {

/// Throws an exception of the core with the given text, put together from its parts as a stream prints them.
/// @param file  the reporting source, as a path from the root of the tree without its extension.
template <typename Error, typename... Parts>
[[noreturn]] void raise(const char* file, std::uint64_t line, const Parts&... parts) {
    std::ostringstream text;
    Exception::ExceptionInfo info;
    info.file = file;
    info.line = line;
    (text << ... << parts);
    info.message = text.str();
    throw Error(info);
}

}  // namespace zel
