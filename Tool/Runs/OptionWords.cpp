#include "Runs/OptionWords.h"

namespace zel::tool {

namespace {

std::string helpText(const OptionWords& words, const std::string& range) {
    std::string notes = range;
    if (!words.defaultText.empty()) {
        const bool isPhrase = words.defaultText.find(' ') != std::string::npos;
        notes += (notes.empty() ? "default" : "; default") + std::string(isPhrase ? ": " : " ") + words.defaultText;
    }
    return words.description + (notes.empty() ? "" : " (" + notes + ")");
}

}  // namespace

CLI::Option* addOption(CLI::App& app, const OptionWords& words, const std::string& range,
                       const std::function<void(const std::string&)>& parse) {
    return app.add_option_function<std::string>(words.name, parse, helpText(words, range))
        ->type_name(words.values)
        ->required(words.isRequired);
}

CLI::ValidationError wrongValue(const std::string& name, const std::string& text, const std::string& allowed) {
    return CLI::ValidationError(name + " is '" + text + "', but takes " + allowed);
}

}  // namespace zel::tool
