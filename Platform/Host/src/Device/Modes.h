#pragma once

#include <atomic>
#include <cstdint>

namespace zel::host {

/// The test modes, to be read on every call.
struct Modes {
    std::atomic<bool> deferredStreams = false;
    std::atomic<bool> protectedMemory = false;
    std::atomic<bool> poison = false;
    std::atomic<bool> redZones = false;
    std::atomic<std::uint64_t> blockShuffleSeed = 0;
    std::atomic<bool> strictReleases = false;
};

extern constinit Modes modes;

}  // namespace zel::host
