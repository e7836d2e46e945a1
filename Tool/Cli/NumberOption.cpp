#include "Cli/NumberOption.h"

#include <charconv>

namespace zel::tool {

std::optional<Numbers> parseWholeNumbers(std::string_view text, std::size_t count) {
    Numbers numbers(count);
    const char* position = text.data();
    const char* const end = position + text.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) {
            if (position == end || *position != ',') return std::nullopt;
            ++position;
        }
        const auto [next, status] = std::from_chars(position, end, numbers[i]);
        if (status != std::errc()) return std::nullopt;
        position = next;
    }
    if (position != end) return std::nullopt;
    return numbers;
}

CLI::Option* addNumberOption(CLI::App& app, const std::string& name, std::size_t count, const std::string& allowed,
                             const std::string& description, const std::function<void(const Numbers&)>& take) {
    const auto parse = [=](const std::string& text) {
        const std::optional<Numbers> numbers = parseWholeNumbers(text, count);
        if (!numbers) throw CLI::ValidationError(name + " is '" + text + "', but takes " + allowed);
        take(*numbers);
    };
    return app.add_option_function<std::string>(name, parse, description);
}

}  // namespace zel::tool
