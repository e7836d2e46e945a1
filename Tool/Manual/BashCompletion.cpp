#include "Manual/Completion.h"
#include "Manual/OptionTexts.h"

namespace zel::tool {

namespace {

std::string optionNames(const CLI::App& app) {
    std::string names;
    for (const CLI::Option* const option : optionsOf(app)) names += (names.empty() ? "" : " ") + option->get_name();
    return names;
}

std::string branch(const std::string& pattern, const std::string& words) {
    return "    " + pattern + ") words=\"" + words + "\" ;;\n";
}

/// Where the word before is an option, its words, file names or nothing; else the command's options.
std::string branchesOf(const CLI::App& command) {
    const std::string start = "'" + command.get_name() + " ";
    std::string branches;
    for (const CLI::Option* const option : optionsOf(command)) {
        if (isFlag(*option)) continue;
        const std::string pattern = start + option->get_name() + "'";
        if (takesFile(*option)) {
            branches += "    " + pattern + ") return ;;\n";
        } else {
            branches += branch(pattern, CLI::detail::join(wordsOf(*option), " "));
        }
    }
    return branches + "    " + start + "'*) options=\"" + optionNames(command) + "\" ;;\n";
}

}  // namespace

std::string bashCompletion(const CLI::App& program) {
    std::string commands;
    std::string branches;
    for (const CLI::App* const command : program.get_subcommands({})) {
        commands += command->get_name() + " ";
        branches += branchesOf(*command);
    }
    // Without an answer readline completes the names of files. --option=word comes as three words.
    return "# Completes the command lines of " + program.get_name() + R"( in bash. Made from its own lists of options.
_zel() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words= options=
    [[ $word == = ]] && word=
    [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
    ((COMP_CWORD > 1)) || before=
    case "${before:+${COMP_WORDS[1]} }$before" in
)" + branch("''", commands + optionNames(program)) +
           branches + R"(    esac
    if [[ $options ]]; then
        [[ $word == -* ]] || return
        words=$options
    fi
    compopt +o default
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _zel )" +
           program.get_name() + "\n";
}

}  // namespace zel::tool
