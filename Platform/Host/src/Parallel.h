#pragma once

namespace zel::host {

/// Threads that blocks and copies run on, the calling one included.
int deviceThreads();

}  // namespace zel::host
