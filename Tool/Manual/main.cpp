// Writes the manual pages and the shell completions of the installed tree into the folder given, from the commands' own
// texts and options.

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "Application.h"
#include "Commands/Commands.h"
#include "Manual/Completion.h"
#include "Manual/ManualPage.h"

namespace {

void write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path);
    file << text << std::flush;
}

void writeAll(const std::filesystem::path& folder) {
    using namespace zel::tool;
    const auto commands = makeCommands();
    const auto program = makeParser(commands);
    create_directories(folder / "man1");
    write(folder / "man1/zel.1", manualPage(*program));
    for (const CLI::App* const command : program->get_subcommands({})) {
        write(folder / ("man1/zel-" + command->get_name() + ".1"), manualPage(*program, *command));
    }
    write(folder / "zel.bash", bashCompletion(*program));
    write(folder / "_zel", zshCompletion(*program));
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) throw std::runtime_error("takes the folder to write to");
        writeAll(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "zel_manual: " << error.what() << "\n";
        return 1;
    }
}
