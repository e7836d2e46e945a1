#pragma once

#include <cuda_runtime.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <shared_mutex>
#include <unordered_set>
#include <vector>

#include "Device/BlockStore.h"

namespace zel::host {

/// What a caller asks for: `bytes` are counted, `extent` bytes are its to use (more where rows are padded).
struct MemoryRequest {
    std::uint64_t bytes = 0;
    std::uint64_t extent = 0;
};

inline constexpr std::uint64_t redZoneWord = 0xFBFB'FBFB'FBFB'FBFB;

/// The live allocations of all devices.
class Allocations {
public:
    /// Null when the device's capacity or the machine does not allow it.
    void* allocate(const MemoryRequest& request, int device);
    cudaError_t free(void* address);
    /// Ends all allocations of a device. Their addresses are never given out again.
    void retire(int device);

    /// Whether all of [address, address + bytes) lies in one live allocation.
    bool contains(const void* address, std::uint64_t bytes) const;
    /// Whether a byte of [address, address + bytes) belongs to the block of a live allocation.
    bool touches(const void* address, std::uint64_t bytes) const;
    /// Whether the address was one of an allocation that a reset has ended.
    bool isRetired(const void* address) const;
    /// Ends the process with a message when a byte of a red zone has changed.
    void checkRedZones();
    /// Where the eight bytes lie that are next to live allocations, before and behind each, and have to stay
    /// `redZoneWord`. Up to the next change of `changes`.
    std::vector<const std::byte*> redZoneEdges() const;
    std::uint64_t changes() const { return changes_; }

    /// Between the two, device memory can be touched in protected mode. They nest and may overlap between threads.
    void open();
    void close();

    struct Use {
        std::uint64_t count = 0, bytes = 0, peakBytes = 0;
    };
    Use use() const;
    void resetPeak();
    std::uint64_t usedBytes(int device) const;

private:
    struct Allocation {
        Block block;
        std::uint64_t frontZone = 0;
        std::uint64_t bytes = 0, extent = 0;
        int device = 0;
        bool redZones = false;

        std::byte* address() const { return block.base + frontZone; }
        void checkRedZones() const;
    };
    using Live = std::map<std::uintptr_t, Allocation>;

    bool reserve(std::uint64_t bytes, int device);
    void unreserve(std::uint64_t bytes, int device);
    static Allocation make(const MemoryRequest& request, int device);

    mutable std::shared_mutex mutex_;
    Live live_;
    std::unordered_set<std::uintptr_t> retired_;
    std::map<int, std::uint64_t> deviceBytes_;
    Use use_;
    std::uint64_t openings_ = 0;
    std::atomic<std::uint64_t> changes_ = 0;
};

/// Never destroyed: memory may be freed by other libraries' destructors at exit.
Allocations& allocations();

/// Opens device memory for a scope; costs nothing outside protected mode.
class OpenMemory {
public:
    OpenMemory();
    ~OpenMemory();
    OpenMemory(const OpenMemory&) = delete;
    OpenMemory& operator=(const OpenMemory&) = delete;

private:
    const bool active_;
};

/// Whether all of [address, address + bytes) lies in one live device allocation.
bool isDeviceRange(const void* address, std::size_t bytes);

/// Whether the device can use all of [address, address + bytes): in one live device allocation, or in the host's own
/// memory. Of that the first and the last page are looked at; a pointer to freed device memory is found out while the
/// memory waits for its next use.
bool isReachable(const void* address, std::size_t bytes);

}  // namespace zel::host
