#pragma once

#include <cstddef>

namespace zel::host {

/// Threads that may work on a loop now, the calling one included.
std::size_t usableThreads();

/// Has a worker of the device's arena call work(slot) at some time, if the system grants one.
void startWorker(void (*work)(std::size_t slot), std::size_t slot);

}  // namespace zel::host
