#pragma once

#include <memory>

#include "Cli/Command.h"

namespace zel::tool {

std::unique_ptr<Command> makeBoxFilterCommand();
std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeConvertCommand();
std::unique_ptr<Command> makeDemoCommand();

}  // namespace zel::tool
