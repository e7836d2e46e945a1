#pragma once

#include <cstddef>

namespace zel::host {

/// Where a block's memory comes from.
enum class BlockKind {
    heap,   ///< the C++ heap
    large,  ///< huge pages of its own, kept for reuse
    pages,  ///< pages of its own, which can be closed
};

/// Raw memory behind one allocation.
struct Block {
    std::byte* base = nullptr;
    std::size_t bytes = 0;  ///< at least what was asked for
    BlockKind kind = BlockKind::heap;
};

/// The alignment of a block's base; `pages` blocks have the page's.
inline constexpr std::size_t blockAlignment = 256;
inline constexpr std::size_t pageBytes = 4096;

/// A block of the kind that suits the size and the modes; its base is null when the machine has no more.
Block acquireBlock(std::size_t bytes);
/// Takes a block back, for later calls of acquireBlock() or for the machine.
void releaseBlock(const Block& block);
/// Whether an address lies in a block that waits for later calls of acquireBlock().
bool isInKeptBlock(const void* address);
/// Gives all blocks that wait for later calls of acquireBlock() to the machine.
void dropKeptBlocks();
/// Gives a block's memory up as far as possible, but keeps its addresses from ever being given out again.
void retireBlock(const Block& block);
/// Opens or closes a `pages` block to all access.
void setBlockOpen(const Block& block, bool open);

}  // namespace zel::host
