#pragma once

#include <cstddef>

namespace zel::tool {

/// What an image file says besides voxels, sizes and spacing. It goes with the image from the file that was read to the
/// one that is written; a format writes what it knows and leaves the rest.
struct FileDetails {
    std::size_t npyAxisCount = 0;  ///< of a NumPy array: (1, h, w) has 3; 0 where the file was none
};

}  // namespace zel::tool
