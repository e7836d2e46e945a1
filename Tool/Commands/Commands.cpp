#include "Commands/Commands.h"

namespace zel::tool {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(makeBoxFilterCommand());
    commands.push_back(makeErosionCommand());
    commands.push_back(makeDilationCommand());
    commands.push_back(makeOpeningCommand());
    commands.push_back(makeClosingCommand());
    commands.push_back(makeGaussianFilterCommand());
    commands.push_back(makeInfoCommand());
    commands.push_back(makeConvertCommand());
    commands.push_back(makeDemoCommand());
    return commands;
}

}  // namespace zel::tool
