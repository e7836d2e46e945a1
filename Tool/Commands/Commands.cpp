#include "Commands/Commands.h"

namespace zel::tool {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
#define ZEL_MAKE(Name) commands.push_back(make##Name##Command());
    ZEL_FOR_EACH_COMMAND(ZEL_MAKE)
#undef ZEL_MAKE
    return commands;
}

}  // namespace zel::tool
