#pragma once

#include <cstdlib>
#include <initializer_list>
#include <utility>

namespace zel::test {

/// The debug facility's environment variables for a scope: those given, and no other.
class DebugEnvironment {
public:
    DebugEnvironment(std::initializer_list<std::pair<const char*, const char*>> variables) {
        clear();
        for (const auto& [name, value] : variables) setenv(name, value, 1);
    }
    ~DebugEnvironment() { clear(); }

private:
    static void clear() {
        for (const char* name :
             {"KESTA_DEBUG", "KESTA_DEBUG_LEVEL", "KESTA_DEBUG_FUNC_FILTER", "KESTA_DEBUG_PACKAGE_FILTER"}) {
            unsetenv(name);
        }
    }
};

}  // namespace zel::test
