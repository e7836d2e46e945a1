#include "Runs/ChoiceOption.h"

namespace zel::tool {

std::string choiceText(const std::vector<std::string>& words) {
    if (words.size() == 2) return words[0] + " or " + words[1];
    std::string text = "one of ";
    for (std::size_t i = 0; i < words.size(); ++i) text += (i > 0 ? ", " : "") + words[i];
    return text;
}

}  // namespace zel::tool
