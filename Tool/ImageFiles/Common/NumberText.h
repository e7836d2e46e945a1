#pragma once

#include <array>
#include <charconv>
#include <string>

namespace zel::tool {

/// The shortest text that reads back as the same number.
template <typename T>
std::string numberToText(T value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

}  // namespace zel::tool
