#include "Runs/CancelOnInterrupt.h"

#include <chrono>

#include "System/Interrupt.h"

namespace zel::tool {

CancelOnInterrupt::CancelOnInterrupt(BaseAlgorithm& algorithm)
    : algorithm_(algorithm), watcher_([this](const std::stop_token& stop) { watch(stop); }) {}

void CancelOnInterrupt::watch(const std::stop_token& stop) {
    // Repeatedly, since a call between two runs of the algorithm has no effect.
    constexpr std::chrono::milliseconds period{20};
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        if (isInterrupted()) algorithm_.cancel();
        wakeUp_.wait_for(lock, stop, period, [] { return false; });
    }
}

}  // namespace zel::tool
