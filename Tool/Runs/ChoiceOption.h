#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "Runs/OptionWords.h"

namespace zel::tool {

/// A word that an option takes, and the value that it stands for.
template <typename Value>
struct Choice {
    std::string word;
    Value value;
};

/// "host or device", "one of uint8, uint16, float32".
std::string choiceText(const std::vector<std::string>& words);

/// Adds an option that takes one of several words.
/// @param set  called with the word's value when the option is given.
template <typename Value>
CLI::Option* addChoiceOption(CLI::App& app, const OptionWords& words, const std::vector<Choice<Value>>& choices,
                             const std::type_identity_t<std::function<void(Value)>>& set) {
    std::vector<std::string> known;
    for (const Choice<Value>& choice : choices) known.push_back(choice.word);
    OptionWords shown = words;
    if (shown.values.empty()) shown.values = CLI::detail::join(known, "|");
    const auto parse = [=, name = words.name](const std::string& text) {
        const auto chosen = std::ranges::find(choices, text, &Choice<Value>::word);
        if (chosen == choices.end()) throw wrongValue(name, text, choiceText(known));
        set(chosen->value);
    };
    return addOption(app, shown, "", parse);
}

}  // namespace zel::tool
