#pragma once

#include <string>
#include <vector>

#include "ImageFiles/Common/NumberText.h"
#include "Runs/ChoiceOption.h"
#include "Runs/NumberOption.h"
#include "zel/Property.h"

// Options that set an algorithm's properties, which have to outlive the parser. Range, unit and default in their texts
// are those of the properties.

namespace zel::tool {

/// Appends a property's numbers.
template <typename Number>
void appendNumbers(const Property<Number>& property, std::vector<Number>& numbers) {
    numbers.push_back(property);
}
template <typename Number>
void appendNumbers(const Property<Vector3<Number>>& property, std::vector<Number>& numbers) {
    const auto& [x, y, z] = property.get();
    numbers.insert(numbers.end(), {x, y, z});
}

/// Sets a property from as many numbers as it has, and moves `next` behind them.
template <typename Number>
void takeNumbers(Property<Number>& property, const Number*& next) {
    property = *next;
    next += 1;
}
template <typename Number>
void takeNumbers(Property<Vector3<Number>>& property, const Number*& next) {
    property = {next[0], next[1], next[2]};
    next += 3;
}

/// Adds an option that takes the numbers of one property or of several alike ones: --radius R, --kernel X,Y, --sigma
/// X,Y,Z. One number stands for all of them: --kernel 9.
template <typename Value, typename... More>
CLI::Option* addPropertyOption(CLI::App& app, OptionWords words, Property<Value>& property, More&... more) {
    using Number = typename detail::NumberIn<Value>::type;
    std::vector<Number> defaults;
    appendNumbers(property, defaults);
    (appendNumbers(more, defaults), ...);
    std::string text;
    for (const Number number : defaults) text += (text.empty() ? "" : ",") + numberToText(number);
    if (!words.isRequired) words.defaultText = text;

    const std::size_t count = defaults.size();
    const NumberFormat<Number> format{count, count, property.allowed(), count > 1 ? text : "", count > 1};
    return addNumberOption(app, words, format, [&](const std::vector<Number>& numbers) {
        const Number* next = numbers.data();
        takeNumbers(property, next);
        (takeNumbers(more, next), ...);
    });
}

/// Adds an option that takes a word for each of the property's values.
CLI::Option* addPropertyChoice(CLI::App& app, OptionWords words, PropertySingleChoice& property,
                               const std::vector<Choice<int>>& choices);

/// Adds a flag that turns the property on.
CLI::Option* addPropertyFlag(CLI::App& app, const std::string& name, const std::string& description,
                             Property<bool>& property);

}  // namespace zel::tool
