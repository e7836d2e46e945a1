#pragma once

#include <cstddef>
#include <functional>

#include "Gang.h"

namespace zel::host {

/// Runs the pieces of a loop over [begin, end), most of them of `grain` items or more, on the device's threads.
void dealPieces(std::size_t begin, std::size_t end, std::size_t grain, LoopPiece run, void* loop);

/// Of the device's threads, those that the scheduler may use now, the calling one included.
int usableThreads();

/// Has one of the device's threads run `task`, at some time.
void startTask(std::function<void()> task);

}  // namespace zel::host
