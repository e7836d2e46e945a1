#include "Runs/NumberOption.h"

#include <charconv>

namespace zel::tool {

template <typename Number>
std::optional<std::vector<Number>> parseNumbers(std::string_view text, const NumberCount& count) {
    std::vector<Number> numbers;
    const char* position = text.data();
    const char* const end = position + text.size();
    while (numbers.size() < count.most) {
        Number number{};
        const auto [next, status] = std::from_chars(position, end, number);
        if (status != std::errc()) return std::nullopt;
        numbers.push_back(number);
        position = next;
        if (position == end) break;
        if (*position != ',' || numbers.size() == count.most) return std::nullopt;
        ++position;
    }
    if (numbers.size() < count.least) return std::nullopt;
    return numbers;
}

template std::optional<Numbers> parseNumbers(std::string_view text, const NumberCount& count);
template std::optional<RealNumbers> parseNumbers(std::string_view text, const NumberCount& count);

template <typename Number>
CLI::Option* addNumberOption(CLI::App& app, const std::string& name, const NumberCount& count,
                             const std::string& allowed, const std::string& description,
                             const std::type_identity_t<std::function<void(const std::vector<Number>&)>>& take) {
    const auto parse = [=](const std::string& text) {
        const std::optional<std::vector<Number>> numbers = parseNumbers<Number>(text, count);
        if (!numbers) throw CLI::ValidationError(name + " is '" + text + "', but takes " + allowed);
        take(*numbers);
    };
    return app.add_option_function<std::string>(name, parse, description);
}

template CLI::Option* addNumberOption<unsigned>(CLI::App&, const std::string&, const NumberCount&, const std::string&,
                                                const std::string&, const std::function<void(const Numbers&)>&);
template CLI::Option* addNumberOption<double>(CLI::App&, const std::string&, const NumberCount&, const std::string&,
                                              const std::string&, const std::function<void(const RealNumbers&)>&);

}  // namespace zel::tool
