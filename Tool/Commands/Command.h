#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zel::tool {

/// One subcommand of the program.
class Command {
public:
    virtual ~Command() = default;

    virtual std::string name() const = 0;
    virtual std::string description() const = 0;
    /// Adds the subcommand's options to its parser, which sets members of this object.
    virtual void addOptions(CLI::App& app) = 0;
    /// Does the work, after the options were parsed. Most failures are exceptions.
    /// @return the exit code.
    virtual int run() = 0;
};

}  // namespace zel::tool
