#include "Manual/Completion.h"
#include "Manual/OptionTexts.h"

namespace zel::tool {

namespace {

/// A word in single quotes, on a line of its own that goes on.
std::string argument(const std::string& text) {
    std::string quoted;
    for (const char character : text) quoted += character == '\'' ? "'\\''" : std::string(1, character);
    return " \\\n            '" + quoted + "'";
}

std::string action(const CLI::Option& option) {
    const std::vector<std::string> words = wordsOf(option);
    if (!words.empty()) return "(" + CLI::detail::join(words, " ") + ")";
    return takesFile(option) || option.get_positional() ? "_files" : " ";
}

std::string optspec(const CLI::Option& option) {
    if (option.get_positional()) {
        const std::string position = option.get_items_expected_max() > 1 ? "*" : option.get_required() ? "" : ":";
        return position + ":" + option.get_name(true) + ":" + action(option);
    }
    const std::string start = option.get_name() + "[" + escaped(option.get_description(), "\\[]:") + "]";
    return isFlag(option) ? start : start + ":" + escaped(option.get_type_name(), "\\:") + ":" + action(option);
}

std::string argumentsOf(const CLI::App& app) {
    std::string text = "_arguments -C";
    for (const CLI::Option* const option : optionsOf(app)) text += argument(optspec(*option));
    for (const CLI::Option* const positional : positionalsOf(app)) text += argument(optspec(*positional));
    return text;
}

}  // namespace

std::string zshCompletion(const CLI::App& program) {
    std::string commands;
    std::string branches;
    for (const CLI::App* const command : program.get_subcommands({})) {
        commands += argument(command->get_name() + ":" + escaped(command->get_description(), "\\:"));
        branches += "        " + command->get_name() + ") " + argumentsOf(*command) + " ;;\n";
    }
    const std::string name = program.get_name();
    return "#compdef " + name + "\n# Completes the command lines of " + name +
           R"( in zsh. Made from its own lists of options.
_zel() {
    local context state line
    typeset -A opt_args
    )" + argumentsOf(program) +
           argument("1:command:->command") + argument("*::argument:->argument") + R"(
    case $state in
    command)
        local -a commands=()" +
           commands + R"()
        _describe command commands ;;
    argument)
        case $words[1] in
)" + branches +
           R"(        esac ;;
    esac
}
_zel "$@"
)";
}

}  // namespace zel::tool
