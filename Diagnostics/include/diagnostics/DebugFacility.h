#pragma once

#include <cstdint>
#include <memory>

#include "diagnostics/DebugWordList.h"
#include "diagnostics/QnAssertionHandler.h"

namespace zel::diagnostics {

/// What the environment asks for, and who is told about violated conditions. Written at load and unload only.
struct DebugSettings {
    std::int32_t debugLevel = 0;
    DebugWordList functionFilter;
    DebugWordList packageFilter;
    std::unique_ptr<QnAssertionHandler> assertionHandler;  ///< there while debugUsers is not 0
    std::int32_t debugUsers = 0;                           ///< initialisations less shutdowns
};

/// The library's settings. They go with it.
DebugSettings& debugSettings();

/// Name of a level as it is printed, padded to the same width from 0 on.
const char* debugLevelName(std::int32_t level);

/// The first user's call reads KESTA_DEBUG, KESTA_DEBUG_LEVEL, KESTA_DEBUG_FUNC_FILTER and KESTA_DEBUG_PACKAGE_FILTER,
/// prints to standard error what it found, and installs an assertion handler; any further one only counts. Without
/// KESTA_DEBUG nothing is printed, the level is 3 and the filters are not read.
void initialiseDebugging();

/// The last user's call takes the assertion handler away. The word lists stay.
void shutDownDebugging();

}  // namespace zel::diagnostics
