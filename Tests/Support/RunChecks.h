#pragma once

#include <cuda_runtime.h>

#include <bit>

#include "FilterRun.h"
#include "zel/CudaContext.h"
#include "zel/Exceptions.h"

// Checks of a FilterRun that hold on every platform.
namespace zel::test {

/// A stream that the caller makes and that a run has to leave alone.
struct CallersStream {
    CallersStream() { EXPECT_EQ(cudaStreamCreate(&context.stream), cudaSuccess); }
    ~CallersStream() { EXPECT_EQ(cudaStreamDestroy(context.stream), cudaSuccess); }
    CudaContext context{0, nullptr};
};

/// Steps that a run promises, each of which it reports.
template <typename Run>
std::uint64_t stepsOf(Run&& run) {
    StepWatch watch;
    run.filter.run(&watch);
    EXPECT_EQ(watch.steps(), watch.total);
    return watch.total;
}

/// check(placement) with the images in each place, for each tile.
template <typename Tile, typename Check>
void onAllPlacements(const std::vector<Tile>& tiles, const Check& check) {
    std::vector<PlacementOf<Tile>> placements{{false, false}, {false, true}, {true, false}, {true, true}};
    if (deviceReadsHostMemory()) placements.push_back({.inputOnDevice = true, .outputOnDevice = true, .inPlace = true});
    for (const Tile& tile : tiles) {
        for (PlacementOf<Tile> placement : placements) {
            placement.tile = tile;
            SCOPED_TRACE(testing::Message()
                         << "tile " << tile.x << " x " << tile.y
                         << " ..., on the device: " << (placement.inputOnDevice ? "input " : "")
                         << (placement.outputOnDevice ? "output" : "") << (placement.inPlace ? " in place" : ""));
            check(placement);
        }
    }
}

/// The bits of what a run gives.
template <typename Run>
std::vector<std::uint32_t> bitsOf(Run&& run) {
    std::vector<std::uint32_t> bits;
    for (const float value : resultOf<float>(run)) bits.push_back(std::bit_cast<std::uint32_t>(value));
    return bits;
}

/// makeRun(placement) gives this, bit for bit, wherever its images lie and for each tile.
template <typename T, typename Tile, typename MakeRun>
void expectEverywhere(const std::vector<T>& expected, const std::vector<Tile>& tiles, const MakeRun& makeRun) {
    onAllPlacements(tiles, [&](const auto& placement) { ASSERT_EQ(resultOf<T>(makeRun(placement)), expected); });
}

/// Cancels a run at each poll. In one block nothing is polled after the download: the result is complete.
template <typename Run, typename Tile>
void expectCancelledAtEachStep(Run& run, const PlacementOf<Tile>& placement) {
    const std::uint64_t total = stepsOf(run);
    const bool endsWithUnpolledDownload = !placement.tiled() && !placement.outputOnDevice;
    for (std::uint64_t done = 0; done < total; ++done) {
        SCOPED_TRACE(testing::Message() << "after " << done << " of " << total << " steps");
        StepWatch canceller(&run.filter, done);
        if (endsWithUnpolledDownload && done + 1 == total) {
            EXPECT_NO_THROW(run.filter.run(&canceller));
        } else {
            EXPECT_THROW(run.filter.run(&canceller), ExceptionCancelation);
            EXPECT_EQ(canceller.steps(), done) << "a step that was cancelled does not count";
        }
    }
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
}

}  // namespace zel::test
