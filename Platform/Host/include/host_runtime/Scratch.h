#pragma once

#include <cstddef>

#include "export.h"

namespace zel::host {

/// Memory of the calling thread, aligned to 64 bytes, for one use at a time: the next call may give out the same or
/// free it. It is kept for later calls, above some MiB only until one asks for less.
ZEL_HOST_API void* threadScratch(std::size_t bytes);

}  // namespace zel::host
