#pragma once

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <cstddef>

namespace zel {

/// Calls body(begin, end) for ranges that make up [0, count), on all cores, and returns when all are done. An exception
/// of a body ends the loop and is thrown on. Isolated: a thread that waits here runs no tasks of other loops.
/// @param grain  the fewest items that are worth a task of their own, at least 1.
template <typename Body>
void parallelRanges(std::size_t count, std::size_t grain, const Body& body) {
    tbb::this_task_arena::isolate([&] {
        tbb::parallel_for(tbb::blocked_range<std::size_t>(0, count, grain),
                          [&](const tbb::blocked_range<std::size_t>& range) { body(range.begin(), range.end()); });
    });
}

}  // namespace zel
