#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "zel/InteractionInterface.h"

namespace zel::tool {

/// A bar on standard error, drawn only where that is a terminal, and how long the rest will take, once some seconds
/// tell. One bar covers several runs of an algorithm. The destructor erases it, so that a message can follow.
class ProgressBar final : public InteractionInterface {
public:
    /// @param isQuiet   draws nothing anywhere.
    /// @param runCount  runs that share the bar in equal parts.
    ProgressBar(bool isQuiet, std::uint64_t runCount);
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void progress(std::uint64_t done, std::uint64_t total) override;
    /// Call it after each run.
    void finishRun();

    /// Of all finished runs.
    std::uint64_t steps() const { return steps_; }

private:
    void draw(double fraction);

    const bool isVisible_;
    const std::uint64_t runCount_;
    std::uint64_t runsDone_ = 0;
    std::uint64_t steps_ = 0;
    std::uint64_t stepsOfRun_ = 0;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::string drawn_;
};

}  // namespace zel::tool
