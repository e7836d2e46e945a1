#pragma once

#include <cstddef>
#include <optional>

#include "ImageFiles/Common/AtomicFile.h"
#include "ImageFiles/Common/Progress.h"
#include "System/Interrupt.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// The image's sizes along the five axes.
ImageSize imageSizeOf(const ImageModel& image);

/// Bytes of all voxels of such an image; nothing when the number is too large for std::size_t.
std::optional<std::size_t> imageBytes(VoxelTypes type, const ImageSize& size);

/// An image of the same size, spacing, origin and orientation, all voxels 0.
HostImage makeImageLike(const ImageModel& image, VoxelTypes type);

/// One row of an image.
struct RowIndex {
    std::size_t y = 0;
    std::size_t z = 0;
    std::size_t i3 = 0;
    std::size_t i4 = 0;
};

/// Calls body(RowIndex) for each row of an image of that size, in the order of memory. A signal ends it with
/// Interrupted.
template <typename Body>
void forEachRow(const ImageSize& size, const Body& body, const Progress& progress = {}) {
    const auto rows = static_cast<double>(size.y * size.z * size.i3 * size.i4);
    double done = 0;
    for (std::size_t i4 = 0; i4 < size.i4; ++i4) {
        for (std::size_t i3 = 0; i3 < size.i3; ++i3) {
            for (std::size_t z = 0; z < size.z; ++z) {
                for (std::size_t y = 0; y < size.y; ++y) {
                    checkInterrupt();
                    body(RowIndex{y, z, i3, i4});
                    if (progress) progress(++done / rows);
                }
            }
        }
    }
}

/// Reads or writes one whole row. @throws std::runtime_error when the image refuses.
void readWholeRow(const ImageModel& image, void* buffer, const RowIndex& row);
void writeWholeRow(ImageModel& image, const void* buffer, const RowIndex& row);

/// Copies all voxels between images in host or device memory. Both have the same size and type.
void copyVoxels(const ImageModel& from, ImageModel& to);

/// Appends all voxels to a file, x fastest.
void writeVoxels(AtomicFile& file, const ImageModel& image, const Progress& progress);

}  // namespace zel::tool
