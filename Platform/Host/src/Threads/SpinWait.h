#pragma once

#include <thread>

namespace zel::host {

/// Waits for another thread's store: without leaving the processor, as long as that thread can be expected to run.
class SpinWait {
public:
    void operator()() {
        constexpr int looksBeforeYield = 1 << 10;
        if (++looks_ > looksBeforeYield) return std::this_thread::yield();
        pause();
    }

    /// Tells the processor that the thread only waits.
    static void pause() {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

private:
    int looks_ = 0;
};

}  // namespace zel::host
