#include "Threads/Team.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>

#include "Threads/Arena.h"
#include "Threads/SpinWait.h"

namespace zel::host {
namespace {

/// Where a worker gets its loops from; in a cache line of its own, which is all that has to travel between two
/// processors for it to see that there is one.
class alignas(64) Slot {
public:
    bool isWaiting() const { return content_.load(std::memory_order_relaxed) == waiting; }

    /// Publishes a loop to a worker that waits.
    bool publish(const OpenLoop& loop) { return change(waiting, key(loop)); }
    /// Publishes a loop to a worker that has yet to come.
    bool publishAhead(const OpenLoop& loop) { return change(empty, key(loop)); }
    /// Takes back what no worker has claimed.
    bool retract(const OpenLoop& loop) { return change(key(loop), waiting); }

    /// The published loop, for the slot's worker to join; null where there is none.
    OpenLoop* claim() {
        const std::uintptr_t loop = content_.load(std::memory_order_relaxed);
        return loop > busy && change(loop, busy) ? reinterpret_cast<OpenLoop*>(loop) : nullptr;
    }
    void waitAgain() { content_.store(waiting, std::memory_order_release); }
    /// The worker goes, unless a loop was published in the meantime.
    bool vacate() { return change(waiting, empty); }

private:
    static constexpr std::uintptr_t empty = 0, waiting = 1, busy = 2;  ///< else a published loop

    static std::uintptr_t key(const OpenLoop& loop) { return reinterpret_cast<std::uintptr_t>(&loop); }
    bool change(std::uintptr_t from, std::uintptr_t to) {
        return content_.load(std::memory_order_relaxed) == from &&
               content_.compare_exchange_strong(from, to, std::memory_order_acq_rel);
    }

    std::atomic<std::uintptr_t> content_{empty};
};

constinit std::array<Slot, 255> slots;

/// A worker's time in its slot: works on the loops that come within some microseconds of each other.
void serve(std::size_t index) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::microseconds patience{30};
    constexpr int looksPerClockRead = 64;
    Slot& slot = slots[index];
    auto patienceEnds = Clock::now() + patience;
    do {
        for (int look = 0; look < looksPerClockRead; ++look) {
            if (OpenLoop* const loop = slot.claim()) {
                loop->work(index + 1);
                // In this order: when the caller has seen the worker leave, it finds it waiting for its next loop.
                slot.waitAgain();
                loop->leave();
                patienceEnds = Clock::now() + patience;
            }
            SpinWait::pause();
        }
    } while (Clock::now() < patienceEnds || !slot.vacate());
}

/// False where the slot's worker is busy. Where none comes, the loop is retracted.
bool publishTo(std::size_t index, const OpenLoop& loop) {
    if (slots[index].publish(loop)) return true;
    if (!slots[index].publishAhead(loop)) return false;
    startWorker(serve, index);
    return true;
}

}  // namespace

OpenLoop::OpenLoop(std::size_t workers, std::size_t slotCount)
    : workers_(workers), slots_(std::min(slotCount, slots.size())) {}

void OpenLoop::callWorkers() {
    for (std::size_t i = 0; i < slots_ && called_ != workers_; ++i) called_ += publishTo(i, *this) ? 1 : 0;
}

void OpenLoop::close() {
    std::size_t joined = called_;
    for (std::size_t i = 0; i < slots_; ++i) joined -= slots[i].retract(*this) ? 1 : 0;
    for (SpinWait wait; left_.load(std::memory_order_acquire) != joined;) wait();
}

bool isWorkerWaiting() {
    return slots[0].isWaiting();
}

}  // namespace zel::host
