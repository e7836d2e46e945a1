#pragma once

#include "zel/HostImage.h"

namespace zel::tool {

/// Where a template lies along an axis: its anchor's pixel of the image, the anchor's pixel of the template, its size.
struct MatchSpan {
    std::size_t position, anchor, size;
};

/// The first slice of an image as uint8, its smallest value black and its largest white, with a rectangle outlined: a
/// white line around a black one, thicker on large images. What leaves the image is cut off.
HostImage markedPicture(const ImageModel& image, const MatchSpan& alongX, const MatchSpan& alongY);

}  // namespace zel::tool
