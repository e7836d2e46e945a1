#pragma once

#include <cstddef>
#include <functional>

#include "host_runtime/Parallel.h"

namespace zel::host {

/// Threads that blocks and copies run on, the calling one included.
int deviceThreads();

/// parallelFor over [begin, end), for what is left of a loop: items keep the thread that they would have in all of it.
void parallelRange(std::size_t begin, std::size_t end, std::size_t grain,
                   const std::function<void(std::size_t, std::size_t)>& body);

}  // namespace zel::host
