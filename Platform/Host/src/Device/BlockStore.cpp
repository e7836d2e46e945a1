#include "Device/BlockStore.h"

#include <sys/mman.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

#include "Device/Modes.h"
#include "Device/Sanitizers.h"
#include "Device/Settings.h"

namespace zel::host {
namespace {

constexpr std::size_t hugePageBytes = std::size_t{2} << 20;
constexpr std::size_t largeFrom = std::size_t{1} << 20;

constexpr std::size_t roundUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

Block heapBlock(std::size_t bytes) {
    void* const base = ::operator new (bytes, std::align_val_t{blockAlignment}, std::nothrow);
    return {static_cast<std::byte*>(base), bytes, BlockKind::heap};
}

std::byte* mapPages(std::size_t bytes) {
    void* const base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return base == MAP_FAILED ? nullptr : static_cast<std::byte*>(base);
}

/// Aligned to huge pages, since the first touch of small ones costs twenty times as much.
Block largeBlock(std::size_t bytes) {
    const std::size_t size = roundUp(bytes, hugePageBytes);
    std::byte* const mapping = mapPages(size + hugePageBytes);
    if (mapping == nullptr) return {};
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(mapping) % hugePageBytes;
    std::byte* const base = mapping + before;
    if (before != 0) munmap(mapping, before);
    munmap(base + size, hugePageBytes - before);
    madvise(base, size, MADV_HUGEPAGE);
    return {base, size, BlockKind::large};
}

void giveToMachine(const Block& block) {
    if (block.kind == BlockKind::heap)
        ::operator delete (block.base, std::align_val_t{blockAlignment});
    else
        munmap(block.base, block.bytes);
}

/// Large blocks that wait for their next use, the oldest first.
class KeptBlocks {
public:
    /// The smallest fitting block that wastes at most a quarter; its base is null if there is none.
    Block take(std::size_t bytes) {
        const std::lock_guard lock(mutex_);
        auto best = blocks_.end();
        for (auto it = blocks_.begin(); it != blocks_.end(); ++it) {
            const bool fits = it->bytes >= bytes && it->bytes <= bytes + bytes / 4 + hugePageBytes;
            if (fits && (best == blocks_.end() || it->bytes <= best->bytes)) best = it;
        }
        if (best == blocks_.end()) return {};
        const Block block = *best;
        blocks_.erase(best);
        bytes_ -= block.bytes;
        return block;
    }

    void keep(const Block& block) {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(block);
        bytes_ += block.bytes;
        shrinkTo(bound_);
    }

    bool contain(const std::byte* address) {
        const std::lock_guard lock(mutex_);
        return std::ranges::any_of(
            blocks_, [=](const Block& block) { return address >= block.base && address < block.base + block.bytes; });
    }

    void drop() {
        const std::lock_guard lock(mutex_);
        shrinkTo(0);
    }

private:
    void shrinkTo(std::size_t bound) {
        auto it = blocks_.begin();
        for (; bytes_ > bound; ++it) {
            bytes_ -= it->bytes;
            giveToMachine(*it);
        }
        blocks_.erase(blocks_.begin(), it);
    }

    std::mutex mutex_;
    std::vector<Block> blocks_;
    std::size_t bytes_ = 0;
    const std::size_t bound_ = std::min<std::size_t>(std::size_t{2} << 30, usableBytes() / 8);
};

KeptBlocks& keptBlocks() {
    static KeptBlocks& kept = *new KeptBlocks;
    return kept;
}

/// Reuse would hide from sanitizers and from poison that freed memory is still in use.
bool reuseIsOn() {
    return !modes.poison && !underAddressSanitizer && !underThreadSanitizer;
}

Block freshBlock(std::size_t bytes, BlockKind kind) {
    switch (kind) {
        case BlockKind::heap:
            return heapBlock(bytes);
        case BlockKind::large:
            return largeBlock(bytes);
        case BlockKind::pages:
            break;
    }
    const std::size_t size = roundUp(bytes, pageBytes);
    return {mapPages(size), size, BlockKind::pages};
}

BlockKind kindFor(std::size_t bytes) {
    if (modes.protectedMemory) return BlockKind::pages;
    // On the heap AddressSanitizer sees every overrun.
    return bytes < largeFrom || underAddressSanitizer ? BlockKind::heap : BlockKind::large;
}

}  // namespace

Block acquireBlock(std::size_t bytes) {
    const BlockKind kind = kindFor(bytes);
    if (kind == BlockKind::large && reuseIsOn()) {
        if (const Block block = keptBlocks().take(bytes); block.base != nullptr) return block;
    }
    Block block = freshBlock(bytes, kind);
    if (block.base == nullptr) {
        dropKeptBlocks();
        block = freshBlock(bytes, kind);
    }
    return block;
}

void releaseBlock(const Block& block) {
    if (block.kind == BlockKind::large && reuseIsOn())
        keptBlocks().keep(block);
    else
        giveToMachine(block);
}

bool isInKeptBlock(const void* address) {
    return keptBlocks().contain(static_cast<const std::byte*>(address));
}

void dropKeptBlocks() {
    keptBlocks().drop();
}

void retireBlock(const Block& block) {
    if (block.kind == BlockKind::heap) {
        // The heap can only be kept from reusing an address by not giving it back. Reachable, so that no leak is seen.
        static std::mutex& mutex = *new std::mutex;
        static std::vector<std::byte*>& retired = *new std::vector<std::byte*>;
        const std::lock_guard lock(mutex);
        retired.push_back(block.base);
        return;
    }
    // Where this fails, the pages just stay as they are.
    static_cast<void>(
        mmap(block.base, block.bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0));
}

void setBlockOpen(const Block& block, bool open) {
    if (block.kind == BlockKind::pages) mprotect(block.base, block.bytes, open ? PROT_READ | PROT_WRITE : PROT_NONE);
}

}  // namespace zel::host
