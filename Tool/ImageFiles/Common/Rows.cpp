#include "ImageFiles/Common/Rows.h"

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace zel::tool {

ImageSize imageSizeOf(const ImageModel& image) {
    return {image.getDimension(0), image.getDimension(1), image.getDimension(2), image.getDimension(3),
            image.getDimension(4)};
}

std::optional<std::size_t> imageBytes(VoxelTypes type, const ImageSize& size) {
    std::size_t bytes = helper::getSizeOf(type);
    for (const std::size_t count : {size.x, size.y, size.z, size.i3, size.i4}) {
        if (__builtin_mul_overflow(bytes, count, &bytes) || bytes > SIZE_MAX / 2) return std::nullopt;
    }
    return bytes;
}

HostImage makeImageLike(const ImageModel& image, VoxelTypes type) {
    HostImage result(type, imageSizeOf(image));
    ImageModel::Orientation orientation;
    image.getOrientation(orientation);
    result.setOrientation(orientation);
    for (int axis = 0; axis < 3; ++axis) {
        result.setOrigin(axis, image.getOrigin(axis));
        result.setSpacing(axis, image.getSpacing(axis));
    }
    return result;
}

void readWholeRow(const ImageModel& image, void* buffer, const RowIndex& row) {
    if (!image.readRow(image.getDimension(0), buffer, 0, row.y, row.z, row.i3, row.i4)) {
        throw std::runtime_error("a row of an image could not be read");
    }
}

void writeWholeRow(ImageModel& image, const void* buffer, const RowIndex& row) {
    if (!image.writeRow(image.getDimension(0), buffer, 0, row.y, row.z, row.i3, row.i4)) {
        throw std::runtime_error("a row of an image could not be written");
    }
}

void copyVoxels(const ImageModel& from, ImageModel& to) {
    const ImageSize size = imageSizeOf(from);
    std::vector<std::byte> buffer(size.x * helper::getSizeOf(from.getDataType()));
    forEachRow(size, [&](const RowIndex& row) {
        readWholeRow(from, buffer.data(), row);
        writeWholeRow(to, buffer.data(), row);
    });
}

void writeVoxels(AtomicFile& file, const ImageModel& image) {
    const ImageSize size = imageSizeOf(image);
    const std::size_t rowBytes = size.x * helper::getSizeOf(image.getDataType());
    if (const void* const voxels = image.hostDataReadOnly(); voxels != nullptr) {
        file.write(voxels, rowBytes * size.y * size.z * size.i3 * size.i4);
        return;
    }
    std::vector<std::byte> row(rowBytes);
    forEachRow(size, [&](const RowIndex& index) {
        readWholeRow(image, row.data(), index);
        file.write(row.data(), row.size());
    });
}

}  // namespace zel::tool
