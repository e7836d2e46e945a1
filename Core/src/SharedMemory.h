#pragma once

#include "zel/ImageModel.h"

namespace zel {

/// Whether writing one image may change the other: the same image or memory, also through proxies, adapters and views,
/// and images of any class that tell where their voxels lie. Parts that do not overlap share nothing when they are
/// parts of one image, of images alike in address, type and dimensions, or when no byte lies between the first and last
/// of both; else they count as shared.
bool sharesMemory(const ImageModel& a, const ImageModel& b);

/// The image behind all proxies and adapters, that voxels are read from in the end.
const ImageModel& imageBehind(const ImageModel& image);

}  // namespace zel
