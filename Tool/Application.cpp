#include "Application.h"

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "Commands/Commands.h"
#include "System/Interrupt.h"
#include "System/Output.h"
#include "zel/Exceptions.h"

namespace zel::tool {

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

/// CLI11's message, but where it does not name the wrong word a message that does.
std::string usageMessage(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining();
    if (!app.get_subcommands().empty() || unknown.empty()) return error.what();
    std::string known;
    for (const CLI::App* const command : app.get_subcommands({})) {
        known += (known.empty() ? "" : ", ") + command->get_name();
    }
    return "'" + unknown.front() + "' is none of its commands " + known;
}

/// Prints one line: what is wrong and how to see the help.
int reportUsage(const CLI::App& app, const CLI::ParseError& error) {
    std::string helpCommand = "zel";
    for (const CLI::App* const command : app.get_subcommands()) helpCommand += " " + command->get_name();
    printError(usageMessage(app, error) + " (see " + helpCommand + " --help)");
    return exitUsage;
}

int parseAndRun(int argc, const char* const* argv) {
    const auto commands = makeCommands();
    const auto parser = makeParser(commands);
    try {
        parser->parse(argc, argv);
        for (const auto& command : commands) {
            if (parser->got_subcommand(command->name())) return command->run();
        }
    } catch (const CLI::ParseError& error) {
        // --help and --version arrive here too, as success, and values that a command finds wrong.
        if (error.get_exit_code() == 0) return parser->exit(error);
        return reportUsage(*parser, error);
    }
    return 0;
}

int reportFailure() {
    try {
        checkInterrupt();  // after a signal, whatever failed then failed because of it
        throw;
    } catch (const Interrupted& interrupted) {
        printError(interrupted.what());
        return interrupted.exitCode();
    } catch (const std::bad_alloc&) {
        printError("not enough memory");
    } catch (const std::exception& error) {
        printError(error.what());
    } catch (...) {
        printError("failed for an unknown reason");
    }
    return exitFailure;
}

}  // namespace

std::unique_ptr<CLI::App> makeParser(const std::vector<std::unique_ptr<Command>>& commands) {
    auto parser = std::make_unique<CLI::App>("Filters images on a GPU, or on the CPU where there is none.", "zel");
    parser->set_version_flag("--version", "zel " ZEL_VERSION);
    parser->require_subcommand(1);
    parser->failure_message(CLI::FailureMessage::simple);
    for (const auto& command : commands) {
        command->addOptions(*parser->add_subcommand(command->name(), command->description()));
    }
    return parser;
}

int runApplication(int argc, const char* const* argv) noexcept {
    try {
        installSignalHandlers();
        return parseAndRun(argc, argv);
    } catch (...) {
        return reportFailure();
    }
}

}  // namespace zel::tool
