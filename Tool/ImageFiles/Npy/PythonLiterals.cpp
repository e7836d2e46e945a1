#include "ImageFiles/Npy/PythonLiterals.h"

#include <cctype>
#include <charconv>

#include "ImageFiles/Common/FileError.h"

namespace zel::tool {

void PythonLiterals::refuse() const {
    throw FileError::reading(path_, "its NPY header is damaged");
}

void PythonLiterals::skipSpace() {
    while (!text_.empty() && std::isspace(static_cast<unsigned char>(text_.front())) != 0) text_.remove_prefix(1);
}

bool PythonLiterals::accept(char wanted) {
    skipSpace();
    if (!text_.starts_with(wanted)) return false;
    text_.remove_prefix(1);
    return true;
}

void PythonLiterals::expect(char wanted) {
    if (!accept(wanted)) refuse();
}

void PythonLiterals::expectEnd() {
    skipSpace();
    if (!text_.empty()) refuse();
}

bool PythonLiterals::isAtQuoted() {
    skipSpace();
    return text_.starts_with('\'') || text_.starts_with('"');
}

std::string_view PythonLiterals::quoted() {
    const char quote = accept('\'') ? '\'' : '"';
    if (quote == '"') expect('"');
    const std::size_t end = text_.find(quote);
    if (end == std::string_view::npos) refuse();
    const std::string_view content = text_.substr(0, end);
    text_.remove_prefix(end + 1);
    return content;
}

bool PythonLiterals::boolean() {
    skipSpace();
    for (const std::string_view word : {std::string_view("True"), std::string_view("False")}) {
        if (!text_.starts_with(word)) continue;
        text_.remove_prefix(word.size());
        return word == "True";
    }
    refuse();
}

std::vector<std::size_t> PythonLiterals::tuple() {
    std::vector<std::size_t> numbers;
    expect('(');
    while (!accept(')')) {
        numbers.push_back(number());
        if (accept(',')) continue;
        expect(')');
        break;
    }
    return numbers;
}

std::size_t PythonLiterals::number() {
    skipSpace();
    std::size_t value = 0;
    const auto [end, status] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
    if (status == std::errc::result_out_of_range) throw FileError::reading(path_, "its size is too large");
    if (status != std::errc()) refuse();
    text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
    accept('L');
    return value;
}

}  // namespace zel::tool
