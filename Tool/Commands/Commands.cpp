#include "Commands/Commands.h"

namespace zel::tool {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(makeBoxFilterCommand());
    commands.push_back(makeInfoCommand());
    commands.push_back(makeConvertCommand());
    commands.push_back(makeDemoCommand());
    return commands;
}

}  // namespace zel::tool
