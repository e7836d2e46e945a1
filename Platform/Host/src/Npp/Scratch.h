#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

namespace zel::host {

/// Work memory of the calling thread, kept for its next filter: fresh pages in each call would cost more than the
/// filters themselves. One at a time on a thread.
class Scratch {
public:
    static constexpr std::size_t alignment = 64;

    /// Bytes that take<T>(count) uses up: the items and one vector that loops may touch beyond them.
    template <typename T>
    static constexpr std::size_t bytesFor(std::size_t count) {
        return (count * sizeof(T) + 2 * alignment - 1) / alignment * alignment;
    }

    explicit Scratch(std::size_t bytes) {
        if (bytes <= kept().bytes) return;
        kept() = {};
        kept().memory.reset(static_cast<std::byte*>(std::aligned_alloc(alignment, bytes)));
        if (!kept().memory) throw std::bad_alloc();
        kept().bytes = bytes;
    }

    ~Scratch() {
        constexpr std::size_t keptAtMost = std::size_t{32} << 20;
        if (kept().bytes > keptAtMost) kept() = {};
    }

    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// The next `count` items, not initialised.
    template <typename T>
    T* take(std::size_t count) {
        T* const items = reinterpret_cast<T*>(kept().memory.get() + used_);
        used_ += bytesFor<T>(count);
        return items;
    }

private:
    struct Free {
        void operator()(std::byte* memory) const { std::free(memory); }
    };
    struct Kept {
        std::unique_ptr<std::byte, Free> memory;
        std::size_t bytes = 0;
    };
    static Kept& kept() {
        thread_local Kept memory;
        return memory;
    }

    std::size_t used_ = 0;
};

}  // namespace zel::host
