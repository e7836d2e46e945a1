#pragma once

#include <array>
#include <string>
#include <string_view>

#include "ImageFiles/Common/FileDetails.h"
#include "ImageFiles/Common/Rows.h"
#include "ImageFiles/Tiff/TiffHandle.h"

namespace zel::tool {

/// What the first page says of all pages, and of the size of voxels.
struct TiffAxes {
    std::size_t slices = 1;
    std::size_t channels = 1;
    std::size_t frames = 1;
    std::array<double, 3> spacing{1, 1, 1};
    std::string unit;  ///< of the spacing; empty where the file does not say
    TiffDetails details;
};

/// Reads ImageJ's and OME's descriptions, the shape of a NumPy array, a line "spacing=x,y,z", and the resolution where
/// it has a unit. Without such a description all pages are slices.
/// @param pageCount  how many pages there are.
/// @param path       for messages.
/// @throws FileError when the description tells of another number of images than there are pages, or orders the pages
///         in a way that is not one of the two formats' usual ones.
TiffAxes tiffAxesOf(const TiffHandle& handle, std::size_t pageCount, const std::string& path);

/// The slice, channel (axis 3) and time (axis 4) of a page.
/// @param order  of the axes over the pages, the fastest first: "CZT".
RowIndex planeOfPage(std::size_t page, const ImageSize& size, std::string_view order);

/// The description of an OME file that the image comes from, as far as it still fits, else ImageJ's form, with the
/// spacing along all three axes besides.
std::string makeTiffDescription(const ImageModel& image, const FileDetails& details);
/// The order of the pages that makeTiffDescription tells.
std::string tiffPageOrder(const ImageModel& image, const FileDetails& details);

}  // namespace zel::tool
