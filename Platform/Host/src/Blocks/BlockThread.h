#pragma once

#include <cuda_runtime.h>

#include <boost/context/fiber.hpp>
#include <cstdint>
#include <exception>
#include <source_location>

#include "Blocks/ThreadSanitizer.h"

namespace zel::host {

/// What orders the threads of a launch for ThreadSanitizer, beside the barriers of a block.
struct LaunchOrder {
    SyncPoint begin, end;
};

/// Two points in turn: at a single one, a thread that is late to go on from a barrier would be ordered behind those
/// that have come to the next one already, and a race between them would stay hidden.
struct BlockOrder {
    SyncPoint barriers[2];
};

/// A thread of a block, as a fiber of the calling thread. It belongs to one block after the other.
class BlockThread {
public:
    BlockThread();
    ~BlockThread();
    BlockThread(const BlockThread&) = delete;
    BlockThread& operator=(const BlockThread&) = delete;

    /// Makes it thread `index` of the block that the calling thread has entered.
    void enter(const KernelCall& kernel, uint3 index, LaunchOrder& launch, BlockOrder& block);
    /// Runs it until it waits at a barrier or has ended.
    void resume();
    /// Ends it at the barrier where it waits, since another thread of the block has failed.
    void abandon();
    /// Called by the fiber itself.
    void wait(std::source_location place);

    uint3 index() const { return index_; }
    bool hasEnded() const { return ended_; }
    /// How many barriers it has reached in this block.
    std::uint64_t barriers() const { return barriers_; }
    /// The last of them.
    const std::source_location& place() const { return place_; }
    /// The exception that it has ended with, if any.
    const std::exception_ptr& failure() const { return failure_; }

private:
    boost::context::fiber run(boost::context::fiber&& caller);
    void runKernel();
    void yield();

    boost::context::fiber fiber_, caller_;
    SanitizedFiber sanitized_;
    const KernelCall* kernel_ = nullptr;
    LaunchOrder* launch_ = nullptr;
    BlockOrder* block_ = nullptr;
    uint3 index_{};
    std::uint64_t barriers_ = 0;
    std::source_location place_;
    bool ended_ = false, abandoned_ = false, dismissed_ = false;
    std::exception_ptr failure_;
};

}  // namespace zel::host
