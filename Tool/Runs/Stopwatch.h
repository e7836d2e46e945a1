#pragma once

#include <chrono>

namespace zel::tool {

/// Runs from its making on.
class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

private:
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start_ = Clock::now();
};

}  // namespace zel::tool
