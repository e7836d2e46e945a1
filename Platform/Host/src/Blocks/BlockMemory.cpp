#include "Blocks/BlockMemory.h"

#include <algorithm>
#include <new>
#include <string>

#include "Blocks/ThreadErrors.h"

namespace zel::host {
namespace {

constexpr std::align_val_t alignment{64};
constexpr std::size_t redZoneBytes = 256;
constexpr std::byte redZoneByte{0xFB};
constexpr std::byte freshByte{0xFF};

bool isNoRedZoneByte(std::byte byte) {
    return byte != redZoneByte;
}

}  // namespace

BlockMemory::BlockMemory(std::size_t bytes) : bytes_(bytes) {
    if (bytes == 0) return;
    const UnorderedMemory unordered;
    memory_ = static_cast<std::byte*>(operator new(bytes + redZoneBytes, alignment));
    std::fill_n(memory_, bytes, freshByte);
    std::fill_n(memory_ + bytes, redZoneBytes, redZoneByte);
}

BlockMemory::~BlockMemory() {
    const UnorderedMemory unordered;
    operator delete(memory_, alignment);
}

void BlockMemory::checkRedZone() const {
    if (bytes_ == 0) return;
    const std::byte* const end = memory_ + bytes_ + redZoneBytes;
    const std::byte* const changed = std::find_if<const std::byte*>(memory_ + bytes_, end, isNoRedZoneByte);
    if (changed != end)
        endWithError("a byte at offset " + std::to_string(changed - memory_) + " of shared memory of " +
                     std::to_string(bytes_) + " bytes was written");
}

}  // namespace zel::host
