#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "ImageFiles/Common/FileDetails.h"
#include "zel/HostImage.h"

namespace zel::tool {

inline constexpr std::size_t mrcHeaderSize = 1024;

/// What the header of an MRC file (MRC2014) says about the voxels that follow it.
struct MrcHeader {
    VoxelTypes type = VoxelTypes::float32;  ///< in the image
    bool isHalfPrecision = false;           ///< 16 bits in the file, float32 in the image
    bool isByteSwapped = false;             ///< against this machine's byte order
    std::array<std::size_t, 3> counts{};    ///< of columns, rows and sections, as the file has them
    std::array<std::size_t, 3> axes{};      ///< of the image, on which these lie: 0 x, 1 y, 2 z
    std::array<double, 3> spacing{};        ///< along x, y and z
    MrcDetails details;                     ///< what else it says; extendedBytes lie between this header and the voxels

    std::vector<std::string> notes;  ///< as in FileDetails

    /// A stack of volumes has them along axis 3.
    ImageSize imageSize() const;
    /// Whether the file has the voxels as the image has them, but for the byte order.
    bool isPlain() const { return !isHalfPrecision && axes == std::array<std::size_t, 3>{0, 1, 2}; }
    std::size_t fileVoxelSize() const { return isHalfPrecision ? 2 : helper::getSizeOf(type); }
};

/// @param bytes  the first mrcHeaderSize bytes of the file.
/// @param path   for messages.
/// @throws FileError when they are not an MRC header, when the mode is not one that can be read, or when sizes or axes
///         are impossible.
MrcHeader parseMrcHeader(std::string_view bytes, const std::string& path);

/// The mode in which MRC stores the type; nothing when it has none.
std::optional<int> mrcModeOf(VoxelTypes type);

}  // namespace zel::tool
