#pragma once

#include <cstddef>

namespace zel::host {

/// Work on items [begin, end) of a loop. It must not throw.
using LoopPiece = void (*)(void* loop, std::size_t begin, std::size_t end);

/// Runs the pieces of a loop over [begin, end), most of them of `grain` items or more, on the calling thread and on
/// threads that wait a moment for the next loop after each one: they take it up far sooner than a thread that has to be
/// woken. False, with nothing done, while the gang works for another caller.
bool runInGang(std::size_t begin, std::size_t end, std::size_t grain, LoopPiece run, void* loop);

/// Whether threads of the gang wait for a loop now, or are on their way to it.
bool isGangWaiting();

}  // namespace zel::host
