#include "Manual/OptionTexts.h"

#include "zel/VoxelTypes.h"

namespace zel::tool {

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return !option->get_positional(); });
}

std::vector<const CLI::Option*> positionalsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

bool isFlag(const CLI::Option& option) {
    return option.get_items_expected_max() == 0;
}

std::vector<std::string> wordsOf(const CLI::Option& option) {
    const std::string values = option.get_type_name();
    if (values.find('|') != std::string::npos) return CLI::detail::split(values, '|');
    std::vector<std::string> types;
    if (values == "TYPE") {
        for (const VoxelTypes type : allVoxelTypes) types.emplace_back(voxelTypeName(type));
    }
    return types;
}

bool takesFile(const CLI::Option& option) {
    const std::string values = option.get_type_name();
    return values == "FILE" || values.find('.') != std::string::npos;
}

std::string escaped(const std::string& text, const std::string& characters) {
    std::string result;
    for (const char character : text) {
        if (characters.find(character) != std::string::npos) result += '\\';
        result += character;
    }
    return result;
}

}  // namespace zel::tool
