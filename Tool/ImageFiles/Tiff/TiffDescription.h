#pragma once

#include <array>
#include <string>
#include <string_view>

#include "ImageFiles/Tiff/TiffHandle.h"
#include "zel/ImageModel.h"

namespace zel::tool {

/// The description that the first page gets: a line "spacing=x,y,z". TIFF's resolution tags are not used, since they
/// know two axes only, and inches and centimetres only.
std::string makeTiffDescription(const ImageModel& image);

/// Whether the current page's description says that the file has more images than pages. Some programs write only one
/// page for a large volume and let the other slices' voxels follow it.
bool hasImagesWithoutPages(const TiffHandle& handle, std::size_t pageCount);

/// The spacing along x, y and z in the current page's description; 1 where it does not say.
std::array<double, 3> spacingOfTiff(const TiffHandle& handle);

}  // namespace zel::tool
