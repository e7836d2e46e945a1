#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <vector>

#include "FilterRun.h"
#include "zel/Exceptions.h"

// Checks of a FilterRun that hold on every platform.
namespace zel::test {

/// Steps that a run promises, each of which it reports.
template <typename Run>
std::uint64_t stepsOf(Run&& run) {
    StepWatch watch;
    run.filter.run(&watch);
    EXPECT_EQ(watch.steps(), watch.total());
    return watch.total();
}

/// makeRun(placement) gives this, bit for bit, wherever its images lie and for each tile.
template <typename T, typename Tile, typename MakeRun>
void expectEverywhere(const std::vector<T>& expected, const std::vector<Tile>& tiles, const MakeRun& makeRun) {
    for (const Tile& tile : tiles) {
        for (const PlacementOf<Tile>& placement : allPlacements<Tile>(tile)) {
            SCOPED_TRACE(testing::Message() << "tile " << tile.x << " x " << tile.y << " ..., device "
                                            << placement.inputOnDevice << placement.outputOnDevice);
            auto run = makeRun(placement);
            run.filter.run();
            ASSERT_EQ(run.template result<T>(), expected);
        }
    }
}

/// Cancels a run at each poll. In one block nothing is polled after the download: the result is complete.
template <typename Run>
void expectCancelledAtEachStep(Run& run, bool endsWithUnpolledDownload) {
    auto& filter = run.filter;
    const std::uint64_t total = stepsOf(run);
    for (std::uint64_t done = 0; done < total; ++done) {
        SCOPED_TRACE(testing::Message() << "after " << done << " of " << total << " steps");
        StepWatch canceller(&filter, done);
        if (endsWithUnpolledDownload && done + 1 == total) {
            EXPECT_NO_THROW(filter.run(&canceller));
        } else {
            EXPECT_THROW(filter.run(&canceller), ExceptionCancelation);
            EXPECT_EQ(canceller.steps(), done) << "a step that was cancelled does not count";
        }
    }
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
}

}  // namespace zel::test
