#include "Device/HeldWork.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "Device/Modes.h"
#include "Device/Streams.h"

namespace zel::host {
namespace {

/// The mutex is kept while work runs: other threads' calls wait for it.
struct Held {
    std::mutex mutex;
    std::unique_ptr<HeldWork> work;
    CUstream_st* stream = nullptr;
    bool synchronised = false;
    /// Whether there is work that has not been done; for a look without the mutex.
    std::atomic<bool> any = false;

    void run() {
        struct Done {
            std::atomic<bool>& any;
            ~Done() { any.store(false, std::memory_order_release); }
        };
        if (work == nullptr) return;
        const Done done{any};
        const std::unique_ptr<HeldWork> taken = std::move(work);
        runNow(*stream, [&] { taken->run(); });
    }
};

/// Never destroyed: calls may come from other libraries' destructors at exit.
Held& held() {
    static Held& work = *new Held;
    return work;
}

template <typename Condition>
void runHeldWorkIf(const Condition& condition) {
    if (!held().any.load(std::memory_order_acquire)) return;
    const std::lock_guard lock(held().mutex);
    if (held().work != nullptr && condition(held())) held().run();
}

}  // namespace

bool mayHoldWork() {
    return !modes.deferredStreams && !modes.protectedMemory && !modes.redZones;
}

void holdWork(cudaStream_t stream, std::unique_ptr<HeldWork> next) {
    CUstream_st& target = streamOf(stream);
    const std::lock_guard lock(held().mutex);
    held().synchronised = false;
    if (held().work != nullptr && held().stream == &target && held().work->append(*next)) return;
    held().run();
    held().work = std::move(next);
    held().stream = &target;
    held().any.store(true, std::memory_order_release);
}

void runHeldWork() {
    runHeldWorkIf([](const Held&) { return true; });
}

void runHeldWorkThatWrites(const void* address, std::size_t bytes) {
    runHeldWorkIf([=](const Held& now) { return now.work->writes(address, bytes); });
}

void beforeCall(HeldWorkUse use) {
    if (use == HeldWorkUse::extend) return;
    runHeldWorkIf([=](Held& now) { return use == HeldWorkUse::run || std::exchange(now.synchronised, true); });
}

}  // namespace zel::host
