#include "Runs/NumberOption.h"

#include <array>
#include <charconv>

namespace zel::tool {

namespace {

std::string countText(std::size_t count) {
    constexpr std::array words{"no", "a", "two", "three"};
    return words.at(count);
}

/// For the help: empty where the option takes all numbers of its type.
template <typename Number>
std::string rangeText(const Allowed<Number>& allowed) {
    const Allowed<Number> all{};
    if (allowed.low == all.low && allowed.high == all.high) return {};
    return toText(allowed) + (allowed.unit.empty() ? "" : " " + std::string(allowed.unit));
}

}  // namespace

template <typename Number>
std::optional<std::vector<Number>> parseNumbers(std::string_view text, const NumberFormat<Number>& format) {
    std::vector<Number> numbers;
    const char* position = text.data();
    const char* const end = position + text.size();
    while (numbers.size() < format.maxCount) {
        Number number{};
        const auto [next, status] = std::from_chars(position, end, number);
        if (status != std::errc() || !format.allowed.contains(number)) return std::nullopt;
        numbers.push_back(number);
        position = next;
        if (position == end) break;
        if (*position != ',' || numbers.size() == format.maxCount) return std::nullopt;
        ++position;
    }
    if (format.isOneForAll && numbers.size() == 1) numbers.resize(format.maxCount, numbers.front());
    if (numbers.size() < format.minCount) return std::nullopt;
    return numbers;
}

template <typename Number>
std::string toText(const NumberFormat<Number>& format) {
    const bool isOne = format.maxCount == 1;
    const std::string fewer = format.isOneForAll && !isOne         ? "one or "
                              : format.minCount == format.maxCount ? ""
                                                                   : countText(format.minCount) + " or ";
    return fewer + countText(format.maxCount) + (std::is_integral_v<Number> ? " whole number" : " number") +
           (isOne ? " " : "s ") + toText(format.allowed) +
           (format.example.empty() ? "" : ", such as " + format.example);
}

template <typename Number>
CLI::Option* addNumberOption(CLI::App& app, const OptionWords& words, const NumberFormat<Number>& format,
                             const std::type_identity_t<std::function<void(const std::vector<Number>&)>>& set) {
    const auto parse = [=, name = words.name](const std::string& text) {
        const auto numbers = parseNumbers(text, format);
        if (!numbers) throw wrongValue(name, text, toText(format));
        set(*numbers);
    };
    return addOption(app, words, rangeText(format.allowed), parse);
}

#define ZEL_INSTANCES(Number)                                                                                 \
    template std::optional<std::vector<Number>> parseNumbers(std::string_view, const NumberFormat<Number>&);  \
    template std::string toText(const NumberFormat<Number>&);                                                 \
    template CLI::Option* addNumberOption<Number>(CLI::App&, const OptionWords&, const NumberFormat<Number>&, \
                                                  const std::function<void(const std::vector<Number>&)>&);
ZEL_INSTANCES(unsigned)
ZEL_INSTANCES(double)
#undef ZEL_INSTANCES

}  // namespace zel::tool
