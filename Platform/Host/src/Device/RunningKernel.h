#pragma once

#include <string>

namespace zel::host {

/// The kernel, block and thread that run now, for a message about them; empty where that is not known. Told by what
/// runs the blocks.
std::string runningKernelThread();

}  // namespace zel::host
