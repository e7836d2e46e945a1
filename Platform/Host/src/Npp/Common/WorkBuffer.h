#pragma once

#include <host_runtime/Scratch.h>

#include <cstddef>

namespace zel::host {

/// A filter's work buffer: the calling thread's scratch, cut into arrays. One at a time on a thread.
class WorkBuffer {
public:
    static constexpr std::size_t alignment = 64;

    /// Bytes that take<T>(count) uses up: the items and one vector that loops may touch beyond them.
    template <typename T>
    static constexpr std::size_t bytesFor(std::size_t count) {
        return (count * sizeof(T) + 2 * alignment - 1) / alignment * alignment;
    }

    explicit WorkBuffer(std::size_t bytes) : next_(static_cast<std::byte*>(threadScratch(bytes))) {}
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    /// The next `count` items, not initialised.
    template <typename T>
    T* take(std::size_t count) {
        T* const items = reinterpret_cast<T*>(next_);
        next_ += bytesFor<T>(count);
        return items;
    }

private:
    std::byte* next_;
};

}  // namespace zel::host
