#pragma once

#include <cuda_runtime.h>

#ifdef ZEL_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>

#include <cstdio>

extern "C" void AnnotateIgnoreWritesBegin(const char* file, int line);
extern "C" void AnnotateIgnoreWritesEnd(const char* file, int line);
#endif

// What ThreadSanitizer is told, so that the fibers of a block are threads to it and races between them are reported;
// nothing where it does not watch. The sources that schedule fibers are compiled without it.
namespace zel::host {

#ifdef ZEL_THREAD_SANITIZER

/// What comes after an acquire() comes after all that went before the release()s.
class SyncPoint {
public:
    void release() { __tsan_release(&place_); }
    void acquire() { __tsan_acquire(&place_); }

private:
    char place_ = 0;
};

class SanitizedFiber {
public:
    SanitizedFiber() = default;
    ~SanitizedFiber() { __tsan_destroy_fiber(fiber_); }
    SanitizedFiber(const SanitizedFiber&) = delete;
    SanitizedFiber& operator=(const SanitizedFiber&) = delete;

    /// Its name in reports.
    void rename(uint3 block, uint3 thread) {
        char name[64];
        std::snprintf(name, sizeof name, "block (%u, %u, %u), thread (%u, %u, %u)", block.x, block.y, block.z, thread.x,
                      thread.y, thread.z);
        __tsan_set_fiber_name(fiber_, name);
    }
    /// The two switches order nothing.
    void enter() {
        caller_ = __tsan_get_current_fiber();
        __tsan_switch_to_fiber(fiber_, __tsan_switch_to_fiber_no_sync);
    }
    void leave() { __tsan_switch_to_fiber(caller_, __tsan_switch_to_fiber_no_sync); }

private:
    void* const fiber_ = __tsan_create_fiber(0);
    void* caller_ = nullptr;
};

/// Memory that is allocated or freed in its scope is new to all threads, without an order between them.
class UnorderedMemory {
public:
    UnorderedMemory() { AnnotateIgnoreWritesBegin(__FILE__, __LINE__); }
    ~UnorderedMemory() { AnnotateIgnoreWritesEnd(__FILE__, __LINE__); }
    UnorderedMemory(const UnorderedMemory&) = delete;
    UnorderedMemory& operator=(const UnorderedMemory&) = delete;
};

#else

struct SyncPoint {
    void release() {}
    void acquire() {}
};

struct SanitizedFiber {
    void rename(uint3, uint3) {}
    void enter() {}
    void leave() {}
};

struct UnorderedMemory {
    UnorderedMemory() {}
};

#endif

}  // namespace zel::host
