#pragma once

#include <cstdint>
#include <string>

#include "ImageFiles/Common/Progress.h"
#include "Runs/Stopwatch.h"
#include "zel/InteractionInterface.h"

namespace zel::tool {

/// A bar on standard error, drawn only where that is a terminal, and how long the rest will take, once some seconds
/// tell. One bar covers several runs of an algorithm. The destructor erases it, so that a message can follow.
class ProgressBar final : public InteractionInterface {
public:
    /// @param work      what goes on, told before the bar: "reading".
    /// @param isQuiet   draws nothing anywhere.
    /// @param runCount  runs of an algorithm that share the bar in equal parts.
    ProgressBar(std::string work, bool isQuiet, std::uint64_t runCount = 1);
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void progress(std::uint64_t done, std::uint64_t total) override;
    /// Call it after each run.
    void finishRun();
    /// Of all finished runs.
    std::uint64_t steps() const { return steps_; }

    /// For work that is no run of an algorithm; nothing to call where nothing is drawn. It refers to the bar.
    Progress forWork();

private:
    void draw(double fraction);

    const std::string work_;
    const bool isVisible_;
    const std::uint64_t runCount_;
    std::uint64_t runsDone_ = 0;
    std::uint64_t steps_ = 0;
    std::uint64_t stepsOfRun_ = 0;
    const Stopwatch sinceStart_;
    int drawnPercent_ = -1;
    double drawnAtSecond_ = 0;
};

}  // namespace zel::tool
