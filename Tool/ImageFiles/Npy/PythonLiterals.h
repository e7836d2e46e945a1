#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel::tool {

/// Reads, one after the other, the few Python literals that NPY headers consist of. Space between them is skipped.
class PythonLiterals {
public:
    /// @param path  for messages.
    PythonLiterals(std::string_view text, const std::string& path) : text_(text), path_(path) {}

    /// Whether the next character is the wanted one, which is consumed then.
    bool accept(char wanted);
    /// The functions from here on throw FileError when the text does not go on as they say.
    void expect(char wanted);
    void expectEnd();
    /// 'text' or "text", without escapes.
    std::string_view quoted();
    /// True or False.
    bool boolean();
    /// (3, 4) or (3,): whole numbers from 0, also as Python 2 wrote them: 3L.
    std::vector<std::size_t> tuple();

    /// Whether a quoted text comes next.
    bool isAtQuoted();

    [[noreturn]] void refuse() const;

private:
    void skipSpace();
    std::size_t number();

    std::string_view text_;
    const std::string& path_;
};

}  // namespace zel::tool
