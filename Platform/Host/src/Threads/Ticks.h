#pragma once

#include <chrono>
#include <cstdint>

namespace zel::host {

/// A clock for spans of some hundred nanoseconds, which the system's clock would take a good part of to read. Its ticks
/// are about a nanosecond apart or less: good enough to tell what is worth sharing.
inline std::uint64_t ticks() {
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_ia32_rdtsc();
#else
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

#if defined(__x86_64__) || defined(__i386__)
inline constexpr double ticksPerNanosecond = 3;  // two to four on the machines in use
#else
inline constexpr double ticksPerNanosecond = 1;
#endif

}  // namespace zel::host
