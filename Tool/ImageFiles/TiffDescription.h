#pragma once

#include <array>
#include <string>
#include <string_view>

#include "ImageFiles/TiffHandle.h"
#include "zel/ImageModel.h"

namespace zel::tool {

/// TIFF has no tags for voxels of three sizes in a unit of one's own: its resolution is per inch or centimetre and
/// knows two axes. Files of ours therefore have a line "spacing=x,y,z" in the description of their first page, and
/// the resolution tags stay out of use.
std::string makeTiffDescription(const ImageModel& image);

/// Whether the description of the page at which the handle stands tells of more images than the file has pages. Some
/// programs write one page for all of a large volume, its voxels without a break behind it.
bool hasImagesWithoutPages(const TiffHandle& handle, std::size_t pageCount);

/// The spacing along x, y and z from the page at which the handle stands; 1 where a file does not tell.
std::array<double, 3> spacingOfTiff(const TiffHandle& handle);

}  // namespace zel::tool
