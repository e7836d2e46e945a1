#include "Device/Allocations.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <mutex>

#include "Device/Devices.h"
#include "Device/Modes.h"
#include "Device/RunningKernel.h"

namespace zel::host {
namespace {

constexpr std::uint64_t redZoneBytes = blockAlignment;
constexpr std::byte redZoneByte{redZoneWord & 0xFF};
constexpr int freshByte = 0xCD;
constexpr int freedByte = 0xDD;

constexpr auto intact = std::numeric_limits<std::int64_t>::min();

/// The offset from `first` of the first byte of the zone that is not as it was filled, or `intact`.
std::int64_t changedByte(const std::byte* first, const std::byte* begin, const std::byte* end) {
    // Where threads run as on a GPU all zones are looked at very often.
    const auto next = static_cast<std::size_t>(end - begin) - 1;
    if (begin == end || (*begin == redZoneByte && std::memcmp(begin, begin + 1, next) == 0)) return intact;
    return std::find_if(begin, end, [](std::byte b) { return b != redZoneByte; }) - first;
}

[[noreturn]] void reportOverrun(std::uint64_t bytes, std::int64_t offset) {
    std::fprintf(stderr, "host device: %sa byte at offset %lld of an allocation of %llu bytes was written\n",
                 runningKernelThread().c_str(), static_cast<long long>(offset), static_cast<unsigned long long>(bytes));
    std::abort();
}

bool isMapped(const void* address) {
    const std::uintptr_t page = reinterpret_cast<std::uintptr_t>(address) / pageBytes * pageBytes;
    unsigned char isInMemory = 0;
    return mincore(reinterpret_cast<void*>(page), pageBytes, &isInMemory) == 0;
}

std::uintptr_t keyOf(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address);
}

}  // namespace

Allocations& allocations() {
    static Allocations& all = *new Allocations;
    return all;
}

bool isDeviceRange(const void* address, std::size_t bytes) {
    return allocations().contains(address, bytes);
}

bool isReachable(const void* address, std::size_t bytes) {
    if (allocations().contains(address, bytes)) return true;
    if (address == nullptr || modes.separateMemory || bytes == 0) return false;
    const bool wasDevices =
        allocations().touches(address, bytes) || allocations().isRetired(address) || isInKeptBlock(address);
    return !wasDevices && isMapped(address) && isMapped(static_cast<const std::byte*>(address) + bytes - 1);
}

void Allocations::Allocation::checkRedZones() const {
    if (!redZones) return;
    const std::byte* const first = address();
    const std::int64_t before = changedByte(first, block.base, first);
    if (before != intact) reportOverrun(extent, before);
    const std::int64_t behind = changedByte(first, first + extent, block.base + block.bytes);
    if (behind != intact) reportOverrun(extent, behind);
}

/// Memory with its red zones and poison; without a block when there is none to be had.
Allocations::Allocation Allocations::make(const MemoryRequest& request, int device) {
    const bool redZones = modes.redZones;
    const std::uint64_t front = !redZones ? 0 : modes.protectedMemory ? pageBytes : redZoneBytes;
    const std::uint64_t back = redZones ? redZoneBytes : 0;
    const Allocation made{
        acquireBlock(front + request.extent + back), front, request.bytes, request.extent, device, redZones};
    if (made.block.base == nullptr) return made;
    if (modes.poison) std::memset(made.address(), freshByte, request.extent);
    if (redZones) {
        std::byte* const end = made.address() + request.extent;
        std::fill(made.block.base, made.address(), redZoneByte);
        std::fill(end, made.block.base + made.block.bytes, redZoneByte);
    }
    return made;
}

bool Allocations::reserve(std::uint64_t bytes, int device) {
    const std::lock_guard lock(mutex_);
    std::uint64_t& used = deviceBytes_[device];
    const std::uint64_t capacity = deviceBytes();
    if (used > capacity || bytes > capacity - used) return false;
    used += bytes;
    use_.bytes += bytes;
    ++use_.count;
    use_.peakBytes = std::max(use_.peakBytes, use_.bytes);
    return true;
}

void Allocations::unreserve(std::uint64_t bytes, int device) {
    deviceBytes_[device] -= bytes;
    use_.bytes -= bytes;
    --use_.count;
}

void* Allocations::allocate(const MemoryRequest& request, int device) {
    if (!reserve(request.bytes, device)) return nullptr;
    const Allocation made = make(request, device);
    const std::lock_guard lock(mutex_);
    if (made.block.base == nullptr) {
        unreserve(request.bytes, device);
        return nullptr;
    }
    if (openings_ == 0) setBlockOpen(made.block, false);
    live_.emplace(keyOf(made.address()), made);
    ++changes_;
    return made.address();
}

cudaError_t Allocations::free(void* address) {
    Allocation freed;
    {
        const std::lock_guard lock(mutex_);
        const auto found = live_.find(keyOf(address));
        if (found == live_.end()) return cudaErrorInvalidValue;
        freed = found->second;
        live_.erase(found);
        ++changes_;
        unreserve(freed.bytes, freed.device);
        setBlockOpen(freed.block, true);
    }
    freed.checkRedZones();
    if (modes.poison) std::memset(freed.address(), freedByte, freed.extent);
    releaseBlock(freed.block);
    return cudaSuccess;
}

void Allocations::retire(int device) {
    const std::lock_guard lock(mutex_);
    ++changes_;
    std::erase_if(live_, [&](const Live::value_type& entry) {
        const Allocation& allocation = entry.second;
        if (allocation.device != device) return false;
        unreserve(allocation.bytes, device);
        retired_.insert(entry.first);
        retireBlock(allocation.block);
        return true;
    });
}

bool Allocations::contains(const void* address, std::uint64_t bytes) const {
    const std::shared_lock lock(mutex_);
    const std::uintptr_t key = keyOf(address);
    auto next = live_.upper_bound(key);
    if (next == live_.begin()) return false;
    const auto& [start, allocation] = *--next;
    const std::uint64_t offset = key - start;
    return offset <= allocation.extent && bytes <= allocation.extent - offset;
}

bool Allocations::touches(const void* address, std::uint64_t bytes) const {
    const std::shared_lock lock(mutex_);
    const std::uintptr_t key = keyOf(address);
    std::uintptr_t end = 0;
    if (__builtin_add_overflow(key, bytes, &end)) return true;
    const auto next = live_.lower_bound(end);
    if (next == live_.begin()) return false;
    const Block& last = std::prev(next)->second.block;
    return keyOf(last.base) + last.bytes > key;
}

bool Allocations::isRetired(const void* address) const {
    const std::shared_lock lock(mutex_);
    return retired_.contains(keyOf(address));
}

void Allocations::checkRedZones() {
    if (!modes.redZones) return;
    const OpenMemory opened;
    const std::shared_lock lock(mutex_);
    for (const auto& [start, allocation] : live_) allocation.checkRedZones();
}

std::vector<const std::byte*> Allocations::redZoneEdges() const {
    const std::shared_lock lock(mutex_);
    std::vector<const std::byte*> edges;
    for (const auto& [start, allocation] : live_) {
        if (!allocation.redZones) continue;
        edges.push_back(allocation.address() - sizeof redZoneWord);
        edges.push_back(allocation.address() + allocation.extent);
    }
    return edges;
}

void Allocations::open() {
    const std::lock_guard lock(mutex_);
    if (openings_++ != 0) return;
    for (const auto& [start, allocation] : live_) setBlockOpen(allocation.block, true);
}

void Allocations::close() {
    const std::lock_guard lock(mutex_);
    if (--openings_ != 0) return;
    for (const auto& [start, allocation] : live_) setBlockOpen(allocation.block, false);
}

Allocations::Use Allocations::use() const {
    const std::shared_lock lock(mutex_);
    return use_;
}

void Allocations::resetPeak() {
    const std::lock_guard lock(mutex_);
    use_.peakBytes = use_.bytes;
}

std::uint64_t Allocations::usedBytes(int device) const {
    const std::shared_lock lock(mutex_);
    const auto found = deviceBytes_.find(device);
    return found == deviceBytes_.end() ? 0 : found->second;
}

OpenMemory::OpenMemory() : active_(modes.protectedMemory) {
    if (active_) allocations().open();
}

OpenMemory::~OpenMemory() {
    if (active_) allocations().close();
}

}  // namespace zel::host
