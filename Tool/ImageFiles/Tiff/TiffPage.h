#pragma once

#include <cstdint>
#include <string>

#include "ImageFiles/Tiff/TiffHandle.h"
#include "zel/HostImage.h"

namespace zel::tool {

/// How the voxels of one page of a TIFF file are stored.
struct TiffPage {
    VoxelTypes type = VoxelTypes::uint8;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bitsPerVoxel = 0;  ///< in the file; 1, 2 and 4 become uint8 in the image, floats of 16 become float32
    bool isMirrored = false;       ///< the first column is the right one
    bool isUpsideDown = false;     ///< the first row is the lowest one
    bool isWhiteZero = false;
    bool isCompressed = false;
    bool isTiled = false;
    std::size_t segmentWidth = 0;  ///< a segment is a tile, or a strip, which is as wide as the page
    std::size_t segmentHeight = 0;

    /// Whether the voxels are stored as they are in the image.
    bool isPlain() const { return bitsPerVoxel == 8 * helper::getSizeOf(type); }
    std::size_t rowBytes() const { return width * helper::getSizeOf(type); }
    std::size_t segmentRowBytes() const { return (segmentWidth * bitsPerVoxel + 7) / 8; }
};

/// TIFF's number for a kind of voxels: unsigned, signed, floating-point or complex.
std::uint16_t tiffSampleFormat(VoxelTypes type);

/// "its page 3" for the page at index 2.
std::string tiffPageName(std::size_t index);

/// Reads the tags of the handle's current page.
/// @param index  for messages, from 0.
/// @param path   for messages.
/// @throws FileError when the page is not a grey picture of one of VoxelTypes, is compressed in a way that libtiff does
///         not know, or has impossible sizes.
TiffPage readTiffPage(const TiffHandle& handle, std::size_t index, const std::string& path);

}  // namespace zel::tool
