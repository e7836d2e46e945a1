#include "ImageFiles/Common/Rows.h"

#include <algorithm>
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

void writeVoxels(AtomicFile& file, const ImageModel& image, const Progress& progress) {
    const ImageSize size = imageSizeOf(image);
    const std::size_t rowBytes = size.x * helper::getSizeOf(image.getDataType());
    if (const auto* const voxels = static_cast<const std::byte*>(image.hostDataReadOnly()); voxels != nullptr) {
        constexpr std::size_t bytesPerWrite = std::size_t{4} << 20U;
        const std::size_t bytes = rowBytes * size.y * size.z * size.i3 * size.i4;
        for (std::size_t done = 0; done < bytes;) {
            const std::size_t count = std::min(bytes - done, bytesPerWrite);
            file.write(voxels + done, count);
            done += count;
            if (progress) progress(static_cast<double>(done) / static_cast<double>(bytes));
        }
        return;
    }
    std::vector<std::byte> row(rowBytes);
    const auto writeRow = [&](const RowIndex& index) {
        readWholeRow(image, row.data(), index);
        file.write(row.data(), row.size());
    };
    forEachRow(size, writeRow, progress);
}

}  // namespace zel::tool
