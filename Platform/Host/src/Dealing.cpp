#include "Dealing.h"

#include <tbb/blocked_range.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>

#include "Parallel.h"

namespace zel::host {
namespace {

/// The device's own arena: a thread that waits in it cannot pick up another run's task from the caller's.
tbb::task_arena& arena() {
    static tbb::task_arena& deviceArena = *new tbb::task_arena(deviceThreads());
    return deviceArena;
}

}  // namespace

void dealPieces(std::size_t begin, std::size_t end, std::size_t grain, LoopPiece run, void* loop) {
    arena().execute([&] {
        tbb::this_task_arena::isolate([&] {
            const tbb::blocked_range<std::size_t> all(begin, end, grain);
            tbb::parallel_for(all, [=](const auto& piece) { run(loop, piece.begin(), piece.end()); });
        });
    });
}

int usableThreads() {
    const std::size_t allowed = tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism);
    return static_cast<int>(std::min(allowed, static_cast<std::size_t>(deviceThreads())));
}

void startTask(std::function<void()> task) {
    arena().enqueue(std::move(task));
}

}  // namespace zel::host
