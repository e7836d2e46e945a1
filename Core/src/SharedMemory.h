#pragma once

#include "zel/ImageModel.h"

namespace zel {

/// Whether writing one image changes the other: the same image or memory, also through proxies and adapters. Parts of
/// one image that do not overlap share nothing.
bool sharesMemory(const ImageModel& a, const ImageModel& b);

}  // namespace zel
