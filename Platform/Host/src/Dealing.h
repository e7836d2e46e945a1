#pragma once

#include <cstddef>

namespace zel::host {

/// Work on items [begin, end) of a loop.
using LoopPiece = void (*)(void* loop, std::size_t begin, std::size_t end);

/// Runs the pieces of a loop over [0, count), of at least `grain` items each, on the device's threads.
void dealPieces(std::size_t count, std::size_t grain, LoopPiece run, void* loop);

}  // namespace zel::host
