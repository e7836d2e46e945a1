#pragma once

#include <chrono>
#include <vector>

#include "zel/InteractionInterface.h"

namespace zel::bench {

/// Takes the time of each step of a run, which reports them as its progress.
class StageClock final : public InteractionInterface {
public:
    /// Milliseconds of each step; the first is what came before any.
    const std::vector<double>& milliseconds() const { return milliseconds_; }

    void progress(std::uint64_t, std::uint64_t) override {
        const auto now = Clock::now();
        milliseconds_.push_back(std::chrono::duration<double, std::milli>(now - last_).count());
        last_ = Clock::now();
    }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point last_ = Clock::now();
    std::vector<double> milliseconds_;
};

}  // namespace zel::bench
