#pragma once

namespace zel::host {

/// Tells the processor that the thread only waits for another's store.
inline void spinPause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

}  // namespace zel::host
