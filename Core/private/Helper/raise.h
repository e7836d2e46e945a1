#pragma once

#include <cstdint>
#include <locale>
#include <sstream>
#include <string>

#include "zel/Exceptions.h"

namespace zel {

/// Put together from its parts as a stream prints them, with plain numbers whatever the global locale.
template <typename... Parts>
std::string plainText(const Parts&... parts) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    (text << ... << parts);
    return text.str();
}

/// Throws an exception of the core with the given text, put together by plainText.
/// @param file  the reporting source, as a path from the root of the tree without its extension.
template <typename Error, typename... Parts>
[[noreturn]] void raise(const char* file, std::uint64_t line, const Parts&... parts) {
    Exception::ExceptionInfo info;
    info.file = file;
    info.line = line;
    info.message = plainText(parts...);
    throw Error(info);
}

}  // namespace zel
