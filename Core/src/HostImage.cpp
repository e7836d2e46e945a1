#include "zel/HostImage.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "Helper/raise.h"

namespace zel {

namespace {

constexpr const char* thisFile = "Core/src/HostImage";

std::array<std::size_t, 5> dimensionsOf(const ImageSize& size) {
    return {size.x, size.y, size.z, size.i3, size.i4};
}

std::size_t countedProduct(VoxelTypes type, const ImageSize& size, std::initializer_list<std::size_t> factors) {
    std::size_t bytes = 1;
    for (const std::size_t factor : factors) {
        if (__builtin_mul_overflow(bytes, factor, &bytes)) {
            raise<RuntimeError>(thisFile, __LINE__, "an image of ", size.x, " x ", size.y, " x ", size.z, " x ",
                                size.i3, " x ", size.i4, " voxels of ", voxelTypeName(type),
                                " has more bytes than this machine can count");
        }
    }
    return bytes;
}

std::size_t rowBytesOf(VoxelTypes type, const ImageSize& size) {
    return countedProduct(type, size, {size.x, helper::getSizeOf(type)});
}

std::size_t byteCount(VoxelTypes type, const ImageSize& size, std::size_t rowPitch) {
    return countedProduct(type, size, {rowPitch, size.y, size.z, size.i3, size.i4});
}

/// Zeroed memory that costs next to nothing until it is touched, and then little: in huge pages where they fit.
void* allocateZeroed(std::size_t bytes) {
    void* const memory = std::calloc(bytes == 0 ? 1 : bytes, 1);
    if (memory == nullptr) {
        raise<RuntimeError>(thisFile, __LINE__, "cannot allocate ", bytes, " bytes of host memory for an image");
    }
    constexpr std::size_t page = 4096;
    constexpr std::size_t worthHugePages = std::size_t{4} << 20;
    if (bytes >= worthHugePages) {
        const auto address = reinterpret_cast<std::uintptr_t>(memory);
        const std::uintptr_t firstPage = (address + page - 1) / page * page;
        // Only advice: without huge pages all works, just slower.
        madvise(reinterpret_cast<void*>(firstPage), (address + bytes - firstPage) / page * page, MADV_HUGEPAGE);
    }
    return memory;
}

/// Asks for memory that will probably be used next. The machine reads ahead by itself only within a page, which a few
/// short rows fill.
void prefetch(const std::byte* memory, std::size_t bytes) {
    constexpr std::size_t cacheLine = 64;
    constexpr std::size_t maxBytes = 4096;
    for (std::size_t i = 0; i < std::min(bytes, maxBytes); i += cacheLine) __builtin_prefetch(memory + i);
}

}  // namespace

void HostImage::FreeDeleter::operator()(void* memory) const {
    std::free(memory);
}

HostImage::HostImage(VoxelTypes type, const ImageSize& size)
    : type_(type),
      dimensions_(dimensionsOf(size)),
      rowPitch_(rowBytesOf(type, size)),
      owned_(allocateZeroed(byteCount(type, size, rowPitch_))),
      voxels_(owned_.get()) {}

HostImage::HostImage(VoxelTypes type, const ImageSize& size, void* voxels, std::size_t rowPitchBytes)
    : type_(type), dimensions_(dimensionsOf(size)), rowPitch_(rowPitchBytes), voxels_(voxels) {
    const std::size_t rowBytes = rowBytesOf(type, size);
    if (rowPitchBytes == 0) rowPitch_ = rowBytes;
    if (rowPitch_ < rowBytes) {
        raise<RuntimeError>(thisFile, __LINE__, "a row pitch of ", rowPitchBytes, " bytes is too small for rows of ",
                            rowBytes, " bytes");
    }
    byteCount(type, size, rowPitch_);
}

HostImage::~HostImage() = default;
HostImage::HostImage(HostImage&&) noexcept = default;
HostImage& HostImage::operator=(HostImage&&) noexcept = default;

bool HostImage::isContiguous() const {
    return rowPitch_ == dimensions_[0] * helper::getSizeOf(type_);
}

std::size_t HostImage::extentBytes() const {
    const std::size_t rows = dimensions_[1] * dimensions_[2] * dimensions_[3] * dimensions_[4];
    return rows == 0 ? 0 : (rows - 1) * rowPitch_ + dimensions_[0] * helper::getSizeOf(type_);
}

std::byte* HostImage::rowAddress(std::size_t count, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                                 std::size_t i4) const {
    const bool inside = x <= dimensions_[0] && count <= dimensions_[0] - x && y < dimensions_[1] &&
                        z < dimensions_[2] && i3 < dimensions_[3] && i4 < dimensions_[4];
    if (!inside) return nullptr;
    const std::size_t row = ((i4 * dimensions_[3] + i3) * dimensions_[2] + z) * dimensions_[1] + y;
    return static_cast<std::byte*>(voxels_) + row * rowPitch_ + x * helper::getSizeOf(type_);
}

bool HostImage::readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z, std::size_t i3,
                        std::size_t i4) const {
    const std::byte* const row = rowAddress(count, x, y, z, i3, i4);
    if (row == nullptr) return false;
    const std::size_t bytes = count * helper::getSizeOf(type_);
    if (y + 1 < dimensions_[1]) prefetch(row + rowPitch_, bytes);
    std::memcpy(buffer, row, bytes);
    return true;
}

bool HostImage::writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z,
                         std::size_t i3, std::size_t i4) {
    std::byte* const row = rowAddress(count, x, y, z, i3, i4);
    if (row == nullptr) return false;
    std::memcpy(row, buffer, count * helper::getSizeOf(type_));
    return true;
}

}  // namespace zel
