#pragma once

#include <string>

#include "ImageFiles/TiffHandle.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// How the voxels of one page of a TIFF file are kept.
struct TiffPage {
    VoxelTypes type = VoxelTypes::uint8;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bitsPerVoxel = 0;  ///< in the file: 1, 2 and 4 are uint8 in the image
    bool isWhiteZero = false;
    bool isCompressed = false;
    bool isTiled = false;
    std::size_t blockWidth = 0;  ///< of tiles, or of strips, which are as wide as the page
    std::size_t blockHeight = 0;

    std::size_t rowBytes() const { return width * helper::getSizeOf(type); }
    std::size_t blockRowBytes() const { return (blockWidth * bitsPerVoxel + 7) / 8; }
};

/// "its page 3" for the page at index 2.
std::string tiffPageName(std::size_t index);

/// What the page tells at which the handle stands.
/// @param index  for messages, from 0.
/// @param path   for messages.
/// @throws FileError when the page is no grey picture of the types that VoxelTypes has, is compressed in a way that
///         libtiff does not know, or has no sound sizes.
TiffPage readTiffPage(const TiffHandle& handle, std::size_t index, const std::string& path);

}  // namespace zel::tool
