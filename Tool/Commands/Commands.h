#pragma once

#include <memory>
#include <vector>

#include "Commands/Command.h"

namespace zel::tool {

std::unique_ptr<Command> makeBoxFilterCommand();
std::unique_ptr<Command> makeErosionCommand();
std::unique_ptr<Command> makeDilationCommand();
std::unique_ptr<Command> makeOpeningCommand();
std::unique_ptr<Command> makeClosingCommand();
std::unique_ptr<Command> makeGaussianFilterCommand();
std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeConvertCommand();
std::unique_ptr<Command> makeDemoCommand();

/// All subcommands, in the order of --help.
std::vector<std::unique_ptr<Command>> makeCommands();

}  // namespace zel::tool
