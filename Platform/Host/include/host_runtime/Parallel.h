#pragma once

#include <cstddef>
#include <functional>

#include "export.h"

namespace zel::host {

/// Runs body(begin, end) over pieces of [0, count), most of them of `grain` items or more, on all threads of the
/// device, and returns when all are done. Results must not depend on the cut.
ZEL_HOST_API void parallelFor(std::size_t count, std::size_t grain,
                              const std::function<void(std::size_t, std::size_t)>& body);

}  // namespace zel::host
