#include "diagnostics/DebugFacility.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "diagnostics/QnMinimalAssertionHandler.h"

namespace zel::diagnostics {

namespace {

constexpr std::int32_t quietLevel = 3;
constexpr std::int32_t defaultLevel = 7;

constexpr std::array levelNames = {"EMERG  ", "ALERT  ", "CRIT   ", "ERR    ", "WARNING", "NOTICE ",
                                   "INFO   ", "DEBUG  ", "DEBUG+1", "DEBUG+2", "DEBUG+3", "DEBUG+4"};

void print(const char* text) {
    std::fputs(text, stderr);
}

std::int32_t readLevel() {
    const char* const text = std::getenv("KESTA_DEBUG_LEVEL");
    if (text == nullptr) {
        print("      you can set the level by providing KESTA_DEBUG_LEVEL\n");
        return defaultLevel;
    }
    const std::int32_t level = std::atoi(text);
    std::fprintf(stderr, "   level set to KESTA_DEBUG_LEVEL = %s\n", debugLevelName(level));
    return level;
}

/// @param found   printed before the list.
/// @param advice  printed when the variable is not set; the filter then stays as it is.
void readFilter(const char* variable, const char* found, const char* advice, DebugWordList& filter) {
    const char* const text = std::getenv(variable);
    if (text == nullptr) {
        print(advice);
        return;
    }
    filter = DebugWordList(text);
    print(found);
    filter.print(stderr);
    print("\n");
}

void readEnvironment(DebugSettings& settings) {
    if (std::getenv("KESTA_DEBUG") == nullptr) {
        settings.debugLevel = quietLevel;
        return;
    }
    print("Found KESTA_DEBUG -> Enabling debugging output\n");
    settings.debugLevel = readLevel();
    readFilter("KESTA_DEBUG_FUNC_FILTER", "   set funcfilter from KESTA_DEBUG_FUNC_FILTER = ",
               "      you can set a function filter by providing KESTA_DEBUG_FUNC_FILTER\n", settings.functionFilter);
    readFilter("KESTA_DEBUG_PACKAGE_FILTER", "   set packagefilter from KESTA_DEBUG_PACKAGE_FILTER = ",
               "      you can set a package filter by providing KESTA_DEBUG_PACKAGE_FILTER\n", settings.packageFilter);
}

}  // namespace

DebugSettings& debugSettings() {
    // Made at the first use, which is that of the load sequence: so it is there before and gone after all else.
    static DebugSettings settings;
    return settings;
}

const char* debugLevelName(std::int32_t level) {
    if (level < 0) return "NONE";
    const auto index = static_cast<std::size_t>(level);
    return index < levelNames.size() ? levelNames[index] : "DEBUG>4";
}

void initialiseDebugging() {
    DebugSettings& settings = debugSettings();
    if (settings.debugUsers == 0) {
        readEnvironment(settings);
        settings.assertionHandler = std::make_unique<QnMinimalAssertionHandler>();
    }
    ++settings.debugUsers;
}

void shutDownDebugging() {
    DebugSettings& settings = debugSettings();
    if (--settings.debugUsers == 0) settings.assertionHandler.reset();
}

}  // namespace zel::diagnostics
