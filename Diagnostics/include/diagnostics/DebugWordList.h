#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace zel::diagnostics {

/// Words of a filter, each an own zero-terminated copy.
class DebugWordList {
public:
    static constexpr std::int32_t maxCount = 49;

    DebugWordList() = default;
    /// The words of a text, separated by one or more blanks. What comes behind the 49th is left out.
    explicit DebugWordList(const char* text);

    std::int32_t count() const { return count_; }
    const char* operator[](std::int32_t index) const { return words_[static_cast<std::size_t>(index)].get(); }

    /// Prints the list in parentheses, a comma and a blank behind each word.
    void print(std::FILE* stream) const;

private:
    std::int32_t count_ = 0;
    std::array<std::unique_ptr<char[]>, maxCount> words_;
};

}  // namespace zel::diagnostics
