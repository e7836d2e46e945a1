#include "zel/ImageModelAdapter.h"

#include <algorithm>

#include "Helper/raise.h"
#include "VoxelConversion.h"

namespace zel {

namespace {

// A row is converted in pieces that stay in the first cache, on the stack: rows are read from several threads at once.
constexpr std::size_t pieceBytes = 8192;

}  // namespace

ImageModelAdapter::ImageModelAdapter(const ImageModel* image, VoxelTypes type, DataConvertionTypes)
    : source_(image), writable_(nullptr), type_(type) {
    if (!isConvertible(image->getDataType(), type)) {
        raise<RuntimeError>("Core/src/ImageModelAdapter", __LINE__, "an image of ", voxelTypeName(image->getDataType()),
                            " cannot be seen as ", voxelTypeName(type));
    }
}

ImageModelAdapter::ImageModelAdapter(ImageModel* image, VoxelTypes type, DataConvertionTypes conversion)
    : ImageModelAdapter(static_cast<const ImageModel*>(image), type, conversion) {
    writable_ = image;
}

ImageModelAdapter::~ImageModelAdapter() = default;

ImageModel& ImageModelAdapter::writable() {
    if (writable_ == nullptr) {
        raise<RuntimeError>("Core/src/ImageModelAdapter", __LINE__, "a read-only view of an image cannot change it");
    }
    return *writable_;
}

bool ImageModelAdapter::readRow(std::size_t count, void* buffer, std::size_t x, std::size_t y, std::size_t z,
                                std::size_t i3, std::size_t i4) const {
    alignas(16) std::byte piece[pieceBytes];
    const VoxelTypes from = source_->getDataType();
    const std::size_t pieceCount = pieceBytes / helper::getSizeOf(from);
    auto* target = static_cast<std::byte*>(buffer);
    for (std::size_t done = 0; done < count; done += pieceCount) {
        const std::size_t n = std::min(pieceCount, count - done);
        if (!source_->readRow(n, piece, x + done, y, z, i3, i4)) return false;
        convertVoxels(piece, from, target + done * helper::getSizeOf(type_), type_, n);
    }
    return true;
}

bool ImageModelAdapter::writeRow(std::size_t count, const void* buffer, std::size_t x, std::size_t y, std::size_t z,
                                 std::size_t i3, std::size_t i4) {
    const VoxelTypes to = source_->getDataType();
    if (writable_ == nullptr || !isConvertible(type_, to)) return false;
    alignas(16) std::byte piece[pieceBytes];
    const std::size_t pieceCount = pieceBytes / helper::getSizeOf(to);
    const auto* source = static_cast<const std::byte*>(buffer);
    for (std::size_t done = 0; done < count; done += pieceCount) {
        const std::size_t n = std::min(pieceCount, count - done);
        convertVoxels(source + done * helper::getSizeOf(type_), type_, piece, to, n);
        if (!writable_->writeRow(n, piece, x + done, y, z, i3, i4)) return false;
    }
    return true;
}

}  // namespace zel
