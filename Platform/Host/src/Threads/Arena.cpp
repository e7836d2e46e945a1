#include "Threads/Arena.h"

#include <pthread.h>

#include <tbb/global_control.h>
#include <tbb/task_arena.h>
#include <algorithm>
#include <atomic>
#include <exception>
#include <latch>
#include <system_error>
#include <thread>
#include <vector>

#include "Device/Settings.h"

namespace zel::host {
namespace {

/// How many of `wanted` threads the system lets this process start. TBB would end the process at one that cannot be.
int startableThreads(int wanted) {
    std::vector<std::jthread> threads;
    std::latch counted(1);
    try {
        while (static_cast<int>(threads.size()) < wanted) threads.emplace_back([&] { counted.wait(); });
    } catch (const std::system_error&) {
    }
    counted.count_down();
    return static_cast<int>(threads.size());
}

/// A scope that calls TBB, if it is allowed to. Not in the child of a fork, which lacks the workers of its parent, and
/// not once the process exits and TBB's static objects are destroyed: other threads may run loops until the very end,
/// but alone.
class TbbScope {
public:
    TbbScope() : isAllowed_(enter()) {}
    ~TbbScope() { --inside; }
    TbbScope(const TbbScope&) = delete;
    TbbScope& operator=(const TbbScope&) = delete;

    bool isAllowed() const { return isAllowed_; }

private:
    static constinit std::atomic<bool> used, forbidden;
    static constinit std::atomic<int> inside;

    static bool enter() {
        if (!used) used = true;
        ++inside;
        return !forbidden;
    }
    static void startChild() {
        if (used) forbidden = true;
        inside = 0;  // of this process's threads
    }
    /// Destroyed before the objects of TBB's library, since they were there first.
    struct ProcessEnd {
        ~ProcessEnd() {
            forbidden = true;
            while (inside != 0) std::this_thread::yield();
        }
    };
    static const ProcessEnd processEnd;
    static const int childStart;

    const bool isAllowed_;
};
constinit std::atomic<bool> TbbScope::used = false, TbbScope::forbidden = false;
constinit std::atomic<int> TbbScope::inside = 0;
const TbbScope::ProcessEnd TbbScope::processEnd;
const int TbbScope::childStart = pthread_atfork(nullptr, nullptr, startChild);

/// The device's own arena, so that its workers are not busy with an application's tasks.
struct Arena {
    const int threads = 1 + startableThreads(threadsSetting() - 1);
    tbb::task_arena tasks{threads};
};

Arena& arena() {
    static Arena& deviceArena = *new Arena;
    return deviceArena;
}

}  // namespace

std::size_t usableThreads() {
    const TbbScope scope;
    if (!scope.isAllowed()) return 1;
    const std::size_t allowed = tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism);
    return std::min(allowed, static_cast<std::size_t>(arena().threads));
}

void startWorker(void (*work)(std::size_t slot), std::size_t slot) {
    const TbbScope scope;
    if (!scope.isAllowed()) return;
    try {
        arena().tasks.enqueue([=] { work(slot); });
    } catch (const std::exception&) {
        // No thread or no memory: a loop does with the workers that there are.
    }
}

}  // namespace zel::host
