#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zel/HostImage.h"

namespace zel::tool {

/// What the header of an NPY file tells about the array behind it.
struct NpyHeader {
    VoxelTypes type = VoxelTypes::uint8;
    bool isByteSwapped = false;   ///< against this machine's byte order
    bool isFortranOrder = false;  ///< the first axis is the fastest one, not the last
    std::vector<std::size_t> shape;

    std::size_t elementCount() const;
};

/// Reads the dictionary that an NPY header is.
/// @param path  for messages.
/// @throws FileError when it is none, or tells of an array that is no image: other element types than VoxelTypes, no
///         axis or more than five, no elements, more bytes than can be counted.
NpyHeader parseNpyHeader(std::string_view dictionary, const std::string& path);

/// Everything of an NPY file up to the voxels, which follow in C order and this machine's byte order. The last axis is
/// x; there are two axes at least, and as many as the image has sizes above 1.
std::string makeNpyHeader(VoxelTypes type, const ImageSize& size);

}  // namespace zel::tool
