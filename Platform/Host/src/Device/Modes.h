#pragma once

#include <atomic>
#include <cstdint>

namespace zel::host {

/// Threads that run one after the other, slowly, are watched from the start.
#ifdef ZEL_HOST_BLOCK_THREADS
inline constexpr bool alwaysRedZones = true;
#else
inline constexpr bool alwaysRedZones = false;
#endif

/// The test modes, to be read on every call.
struct Modes {
    std::atomic<bool> deferredStreams = false;
    std::atomic<bool> protectedMemory = false;
    std::atomic<bool> poison = false;
    std::atomic<bool> redZones = alwaysRedZones;
    std::atomic<std::uint64_t> blockShuffleSeed = 0;
    std::atomic<bool> strictReleases = false;
    std::atomic<bool> separateMemory = false;
};

extern constinit Modes modes;

}  // namespace zel::host
