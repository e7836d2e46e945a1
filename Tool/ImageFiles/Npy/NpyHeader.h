#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zel/HostImage.h"

namespace zel::tool {

/// What the header of an NPY file says about the array that follows it.
struct NpyHeader {
    VoxelTypes type = VoxelTypes::uint8;
    bool isByteSwapped = false;   ///< against this machine's byte order
    bool isFortranOrder = false;  ///< the first axis is the fastest one, not the last
    std::vector<std::size_t> shape;

    std::size_t elementCount() const;
    /// The last axis is x.
    ImageSize imageSize() const;
};

/// Parses an NPY header, which is a Python dictionary.
/// @param path  for messages.
/// @throws FileError when it is not one, or when the array cannot be an image: an element type that is not one of
///         VoxelTypes, no axis or more than five, no elements, or a size in bytes beyond std::size_t.
NpyHeader parseNpyHeader(std::string_view dictionary, const std::string& path);

/// Everything of an NPY file up to the voxels, which follow in C order and this machine's byte order. The last axis is
/// x; axes of size 1 in front are left out.
/// @param minAxisCount  how many axes are left at least, up to five; 0 for two.
std::string makeNpyHeader(VoxelTypes type, const ImageSize& size, std::size_t minAxisCount);

}  // namespace zel::tool
