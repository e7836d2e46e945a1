#pragma once

#include <gtest/gtest.h>
#include <host_device.h>

#include <vector>

#include "FilterRun.h"

namespace zel::test {

/// Steps that a run of a FilterRun promises, each of which it reports.
template <typename Run>
std::uint64_t stepsOf(Run&& run) {
    StepWatch watch;
    run.filter.run(&watch);
    EXPECT_EQ(watch.steps(), watch.total());
    return watch.total();
}

/// Bytes on the device that a run of a FilterRun needs at most, and gives back.
template <typename Run>
std::uint64_t peakBytesOf(Run&& run) {
    const std::uint64_t before = host::deviceUse().liveBytes;
    host::resetPeakBytes();
    run.filter.run();
    EXPECT_EQ(host::deviceUse().liveBytes, before);
    return host::deviceUse().peakBytes - before;
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

}  // namespace zel::test
