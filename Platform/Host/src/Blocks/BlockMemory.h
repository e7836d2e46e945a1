#pragma once

#include <cstddef>
#include <memory>

#include "Blocks/ThreadSanitizer.h"

namespace zel::host {

/// The shared memory of one block: of just the size asked for, with a red zone behind it, and filled with bytes that
/// are NaN as a number.
class BlockMemory {
public:
    explicit BlockMemory(std::size_t bytes);
    ~BlockMemory();
    BlockMemory(const BlockMemory&) = delete;
    BlockMemory& operator=(const BlockMemory&) = delete;

    void* get() const { return bytes_ == 0 ? nullptr : memory_; }
    /// Ends the process with a message when a byte behind its end has changed.
    void checkRedZone() const;

private:
    const std::size_t bytes_;
    std::byte* memory_ = nullptr;
};

}  // namespace zel::host
