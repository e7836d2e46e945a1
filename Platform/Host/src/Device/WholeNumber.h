#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zel::host {

/// The number that a text is, or nothing where it is none.
inline std::optional<std::uint64_t> wholeNumber(std::string_view text) {
    const char* const end = text.data() + text.size();
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace zel::host
