#pragma once

#include <atomic>
#include <cstddef>

namespace zel::host {

/// A loop that workers of the device can join.
///
/// Workers wait a moment for the next loop after each one, since they join far sooner than a thread that has to be
/// woken. A caller publishes its loop to workers that are not busy with another one, and retracts it where none has
/// claimed it in time: a thread that the system keeps from running holds no loop up.
class OpenLoop {
public:
    /// What a worker does of the loop; workers are numbered from 1. It must not throw.
    virtual void work(std::size_t worker) = 0;
    void leave() { left_.fetch_add(1, std::memory_order_release); }

protected:
    /// @param workers  the most that join, out of so many slots for one worker each.
    OpenLoop(std::size_t workers, std::size_t slots);
    ~OpenLoop() = default;

    /// Publishes the loop to workers that are free, until enough have been called.
    void callWorkers();
    /// Ends the calls, and waits for the workers that have joined to leave.
    void close();

private:
    const std::size_t workers_;
    const std::size_t slots_;
    std::size_t called_ = 0;
    std::atomic<std::size_t> left_{0};
};

/// Whether a worker waits for a loop now, or is on its way to do so.
bool isWorkerWaiting();

}  // namespace zel::host
