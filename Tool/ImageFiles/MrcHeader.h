#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "ImageFiles/MrcStatistics.h"
#include "zel/HostImage.h"

namespace zel::tool {

inline constexpr std::size_t mrcHeaderSize = 1024;

/// What the header of an MRC file (MRC2014) tells about the voxels behind it.
struct MrcHeader {
    VoxelTypes type = VoxelTypes::float32;  ///< in the image
    bool isHalfPrecision = false;           ///< 16 bits in the file, float32 in the image
    bool isByteSwapped = false;             ///< against this machine's byte order
    std::array<std::size_t, 3> counts{};    ///< of columns, rows and sections, as the file has them
    std::array<std::size_t, 3> axes{};      ///< where those lie in the image: 0 x, 1 y, 2 z
    std::array<double, 3> spacing{};        ///< along x, y and z
    std::size_t extendedBytes = 0;          ///< between this header and the voxels

    ImageSize imageSize() const;
    std::size_t fileVoxelSize() const { return isHalfPrecision ? 2 : helper::getSizeOf(type); }
};

/// @param bytes  the first mrcHeaderSize bytes of the file.
/// @param path   for messages.
/// @throws FileError when they are no MRC header, or one of voxels that VoxelTypes does not have, or when sizes make
///         no sense.
MrcHeader parseMrcHeader(std::string_view bytes, const std::string& path);

/// The number by which MRC knows the type; nothing when it does not.
std::optional<int> mrcModeOf(VoxelTypes type);

/// The header of a file whose voxels follow at once, x fastest, in this machine's byte order.
/// @param image  of a type that MRC knows and of at most three axes.
std::string makeMrcHeader(const ImageModel& image, const MrcStatistics& statistics);

}  // namespace zel::tool
