#include "System/Interrupt.h"

#include <atomic>
#include <csignal>

namespace zel::tool {

namespace {

std::atomic<int> pendingSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may only touch lock-free atomics");

extern "C" void recordSignal(int signal) {
    pendingSignal.store(signal);
}

}  // namespace

void installSignalHandlers() {
    struct sigaction action {};
    action.sa_handler = recordSignal;  // no SA_RESTART: a blocked read, as on a pipe, returns with EINTR
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        // nohup and shells start programs with signals ignored that shall not end them.
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
        sigaction(signal, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

bool isInterrupted() {
    return pendingSignal.load() != 0;
}

void checkInterrupt() {
    if (const int signal = pendingSignal.load(); signal != 0) throw Interrupted(signal);
}

}  // namespace zel::tool
