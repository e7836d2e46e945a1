#include "Cli/Interrupt.h"

#include <atomic>
#include <chrono>
#include <csignal>

namespace zel::tool {

namespace {

std::atomic<int> pendingSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may only touch lock-free atomics");

extern "C" void noteSignal(int signal) {
    pendingSignal.store(signal);
}

}  // namespace

void installSignalHandlers() {
    struct sigaction action {};
    action.sa_handler = noteSignal;  // no SA_RESTART: a read that waits, as on a pipe, comes back and looks
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN);
}

void checkInterrupt() {
    if (const int signal = pendingSignal.load(); signal != 0) throw Interrupted(signal);
}

CancelOnInterrupt::CancelOnInterrupt(BaseAlgorithm& algorithm)
    : algorithm_(algorithm), watcher_([this](const std::stop_token& stop) { watch(stop); }) {}

void CancelOnInterrupt::watch(const std::stop_token& stop) {
    // Again and again, since a call between two runs of the algorithm has no effect.
    constexpr std::chrono::milliseconds period{20};
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        if (pendingSignal.load() != 0) algorithm_.cancel();
        wakeUp_.wait_for(lock, stop, period, [] { return false; });
    }
}

}  // namespace zel::tool
