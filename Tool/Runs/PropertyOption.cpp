#include "Runs/PropertyOption.h"

#include <algorithm>

namespace zel::tool {

CLI::Option* addPropertyChoice(CLI::App& app, OptionWords words, PropertySingleChoice& property,
                               const std::vector<Choice<int>>& choices) {
    const auto initial = std::ranges::find(choices, property.get(), &Choice<int>::value);
    if (!words.isRequired && initial != choices.end()) words.defaultText = initial->word;
    return addChoiceOption(app, words, choices, [&property](int chosen) { property = chosen; });
}

CLI::Option* addPropertyFlag(CLI::App& app, const std::string& name, const std::string& description,
                             Property<bool>& property) {
    return app.add_flag_callback(
        name, [&property] { property = true; }, description);
}

}  // namespace zel::tool
