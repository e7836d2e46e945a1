#pragma once

#include <memory>
#include <vector>

#include "Commands/Command.h"

/// All commands, in the order of --help. Each NAME stands for makeNAMECommand() in a file of the command's own.
#define ZEL_FOR_EACH_COMMAND(X) \
    X(BoxFilter)                \
    X(MedianFilter)             \
    X(Erosion)                  \
    X(Dilation)                 \
    X(Opening)                  \
    X(Closing)                  \
    X(GaussianFilter)           \
    X(NonLocalMeans)            \
    X(CrossCorrelation)         \
    X(TemplateMatching)         \
    X(Rotations)                \
    X(Peaks)                    \
    X(FrequencyFilter)          \
    X(Info)                     \
    X(Convert)                  \
    X(Devices)                  \
    X(Demo)

namespace zel::tool {

#define ZEL_DECLARE_MAKER(Name) std::unique_ptr<Command> make##Name##Command();
ZEL_FOR_EACH_COMMAND(ZEL_DECLARE_MAKER)
#undef ZEL_DECLARE_MAKER

/// One of each.
std::vector<std::unique_ptr<Command>> makeCommands();

}  // namespace zel::tool
