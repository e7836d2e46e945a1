#include <host_runtime/Scratch.h>

#include <memory>
#include <new>

#include "Device/Sanitizers.h"

namespace zel::host {
namespace {

constexpr std::align_val_t alignment{64};

struct Release {
    void operator()(std::byte* memory) const { operator delete[](memory, alignment); }
};

struct Scratch {
    std::unique_ptr<std::byte, Release> memory;
    std::size_t bytes = 0;

    bool suits(std::size_t wanted) const {
        constexpr std::size_t alwaysKept = std::size_t{32} << 20;
        // Of just the size asked for, so that AddressSanitizer sees overruns.
        if (underAddressSanitizer) return bytes == wanted;
        return bytes >= wanted && (bytes <= alwaysKept || bytes == wanted);
    }
};

}  // namespace

void* threadScratch(std::size_t bytes) {
    thread_local Scratch scratch;
    if (!scratch.suits(bytes)) {
        scratch = {};
        scratch.memory.reset(new (alignment, std::nothrow) std::byte[bytes]);
        // Not left to `new`, which under a sanitizer ends the process.
        if (scratch.memory == nullptr) throw std::bad_alloc();
        scratch.bytes = bytes;
    }
    return scratch.memory.get();
}

}  // namespace zel::host
