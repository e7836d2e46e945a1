#include "Manual/ManualPage.h"

#include <algorithm>
#include <cctype>

#include "Manual/OptionTexts.h"

namespace zel::tool {

namespace {

/// Text as roff takes it: a minus sign that can be searched for and copied, and no line that looks like a request.
std::string roff(const std::string& text) {
    std::string result = escaped(text, "\\-");
    std::ranges::replace(result, '\n', ' ');
    return (result.starts_with('.') || result.starts_with('\'') ? "\\&" : "") + result;
}

std::string upper(std::string text) {
    for (char& letter : text) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return text;
}

std::string bold(const std::string& text) {
    return "\\fB" + roff(text) + "\\fR";
}
std::string italic(const std::string& text) {
    return "\\fI" + roff(text) + "\\fR";
}

/// .TH and NAME.
std::string head(const std::string& name, const std::string& description) {
    return ".TH \"" + roff(upper(name)) + "\" 1 \"\" \"zel " ZEL_VERSION "\" \"Commands of zel\"\n" + ".SH NAME\n" +
           roff(name) + " \\- " + roff(description) + "\n";
}

std::string entry(const std::string& title, const std::string& text) {
    return ".TP\n" + title + "\n" + roff(text) + "\n";
}

/// "--kernel X,Y", "-h, --help", "INPUT".
std::string title(const CLI::Option& option) {
    if (option.get_positional()) return italic(option.get_name(true));
    std::string names;
    for (const std::string& name : option.get_snames()) names += bold("-" + name) + ", ";
    names += bold(option.get_name());
    return names + (isFlag(option) ? "" : " " + italic(option.get_type_name()));
}

/// The options that have to be given, "[OPTIONS]" and the positionals.
std::string synopsis(const CLI::App& program, const CLI::App& command) {
    std::string text = bold(program.get_name() + " " + command.get_name());
    for (const CLI::Option* const option : optionsOf(command)) {
        if (option->get_required()) text += " " + title(*option);
    }
    text += " [" + italic("OPTIONS") + "]";
    for (const CLI::Option* const positional : positionalsOf(command)) {
        const std::string more = positional->get_items_expected_max() > 1 ? "..." : "";
        const std::string word = title(*positional) + more;
        text += positional->get_required() ? " " + word : " [" + word + "]";
    }
    return text + "\n";
}

}  // namespace

std::string manualPage(const CLI::App& program) {
    const std::string name = program.get_name();
    std::string page = head(name, "image processing on the GPU, and on CPUs without one");
    page += ".SH SYNOPSIS\n" + bold(name) + " " + italic("COMMAND") + " [" + italic("OPTIONS") + "] " +
            italic("FILES") + "\n.SH DESCRIPTION\n" + roff(program.get_description()) + "\n.SH COMMANDS\n";
    for (const CLI::App* const command : program.get_subcommands({})) {
        page += entry("\\fB" + roff(name + "-" + command->get_name()) + "\\fR(1)", command->get_description());
    }
    page += ".SH OPTIONS\n";
    for (const CLI::Option* const option : optionsOf(program)) page += entry(title(*option), option->get_description());
    page += ".SH EXIT STATUS\n" + entry("0", "Success.") +
            entry("1", "Failure, told in one line on standard error. An output is replaced only by a whole new one.") +
            entry("2", "Wrong usage, found before a file is read.") +
            entry("128 + N", "Ended by signal N, such as 130 after Ctrl-C.");
    return page;
}

std::string manualPage(const CLI::App& program, const CLI::App& command) {
    std::string page = head(program.get_name() + "-" + command.get_name(), command.get_description()) +
                       ".SH SYNOPSIS\n" + synopsis(program, command) + ".SH DESCRIPTION\n" +
                       roff(command.get_description()) + ".\n" + roff(command.get_footer()) + "\n";
    page += ".SH ARGUMENTS\n";
    for (const CLI::Option* const positional : positionalsOf(command)) {
        page += entry(title(*positional), positional->get_description());
    }
    std::string group;
    for (const CLI::Option* const option : optionsOf(command)) {
        if (option->get_group() != group) {
            group = option->get_group();
            page += ".SH " + upper(group) + "\n";
        }
        page += entry(title(*option), option->get_description());
    }
    return page + ".SH SEE ALSO\n\\fB" + program.get_name() + "\\fR(1)\n";
}

}  // namespace zel::tool
