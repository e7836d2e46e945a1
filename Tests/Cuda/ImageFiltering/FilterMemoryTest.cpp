// Plans of runs beside the runs: steps, and peak device memory by formula.

#include <algorithm>

#include "BoxFilterRun.h"
#include "CrossCorrelationRun.h"
#include "DeviceChecks.h"
#include "GaussianFilterRun.h"
#include "MatchingRun.h"
#include "MedianFilterRun.h"
#include "MorphologyRun.h"
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// The filter does what it plans.
void expectPlanned(RunnerAlgorithm& filter) {
    const RunPlan plan = filter.plan();
    const std::uint64_t before = host::deviceUse().liveBytes;
    StepWatch watch;
    host::resetPeakBytes();
    filter.run(&watch);
    const auto peak = static_cast<double>(host::deviceUse().peakBytes - before);
    EXPECT_EQ(host::deviceUse().liveBytes, before);
    EXPECT_NEAR(static_cast<double>(plan.peakBytes), peak, 0.05 * peak);
    EXPECT_EQ(plan.steps, watch.total);
}

/// The plan of a run made from image, further arguments and each placement.
template <typename Run, typename Tile>
void expectPlannedEverywhere(HostImage image, const Tile& tile, const auto&... arguments) {
    for (const PlacementOf<Tile>& placement : {PlacementOf<Tile>{false, false},
                                               {true, false},
                                               {true, true},
                                               {true, true, {}, true},
                                               {false, false, tile},
                                               {true, true, tile},
                                               {true, true, tile, true}}) {
        SCOPED_TRACE(testing::Message() << placement.inputOnDevice << placement.outputOnDevice << placement.inPlace
                                        << placement.tiled());
        Run run(image, arguments..., placement);
        expectPlanned(run.filter);
    }
}

constexpr ImageSize size2d{512, 300};
constexpr Vector2<unsigned> tile2d{250, 100};

}  // namespace

TEST(RunPlanTest, HoldsForNeighbourhoodFilters) {
    expectPlannedEverywhere<BoxFilterRun>(randomImage<std::uint8_t>(size2d, 2), tile2d, 5U, 5U);
    expectPlannedEverywhere<BoxFilterRun>(randomImage<std::int8_t>(size2d, 2), tile2d, 9U, 1U);
    for (const unsigned radius : {1U, 5U}) {
        SCOPED_TRACE(radius);
        expectPlannedEverywhere<MedianFilterRun>(randomImage<std::uint16_t>(size2d, 2), tile2d, radius);
        expectPlannedEverywhere<MorphologyRun<CudaErosion2d>>(randomImage<std::uint8_t>(size2d, 2), tile2d, radius,
                                                              true);
        expectPlannedEverywhere<MorphologyRun<CudaOpening2d>>(randomImage<float>(size2d, 2), tile2d, radius, true);
    }
    HostImage image = randomImage<std::uint16_t>(size2d, 2);
    MedianFilterRun shrinking(image, 5, {false, false, {220, 130}});  // tiles at the far sides are smaller
    const RunPlan plan = shrinking.filter.plan();
    EXPECT_EQ(plan.tiles, (Vector3<unsigned>{3, 3, 1}));
    EXPECT_EQ(plan.tileSize, (Vector3<unsigned>{220, 130, 1}));
    EXPECT_EQ(plan.peakBytes, 2U * (220 + 10) * (130 + 10) + 2 * 2U * 220 * 130);
    host::resetCallCounts();
    shrinking.filter.run();
    EXPECT_EQ(host::callCount("cudaMalloc"), 1U);
}

// Volumes of which each axis in turn has the largest scratch, for more lines than there are blocks or fewer.
TEST(RunPlanTest, HoldsForGaussianFilters) {
    for (const ImageSize& size : {ImageSize{300, 150, 4}, {150, 300, 4}, {150, 4, 300}, {64, 40, 20}}) {
        SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << " x " << size.z);
        const Vector3<unsigned> half{unsigned(size.x) / 2, unsigned(size.y) / 2, unsigned(size.z) / 2};
        for (const bool direct : {false, true}) {
            expectPlannedEverywhere<GaussianFilterRun>(randomImage<std::uint16_t>(size, 2), half, VoxelTypes::uint16,
                                                       GaussianParameters{{1, 1, 1}, 2, direct});
        }
    }
}

TEST(GaussianFilterCallsTest, SynchroniseAtEachStepAndReuseBuffers) {
    HostImage image = randomImage<std::uint8_t>({40, 30, 20}, 2);
    using Counts = std::pair<std::uint64_t, std::uint64_t>;
    const auto counts = [&](const Placement3d& placement) {
        GaussianFilterRun run(image, VoxelTypes::uint8, {{0, 0, 0}, 1}, placement);
        host::resetCallCounts();
        run.filter.run();
        return Counts(host::callCount("cudaDeviceSynchronize"), host::callCount("cudaMalloc3D"));
    };
    // One before the passes, and one for each of the steps.
    EXPECT_EQ(counts({false, false}), Counts(1 + 5, 3));
    EXPECT_EQ(counts({true, true}), Counts(1 + 3, 1));
    // Tiles of 16, 16 and 8 by 16 and 14 by 16 and 4. Each slice of a tile travels alone, as it has gaps in the image.
    // Only the output's buffer is made anew, at each change of height or depth.
    EXPECT_EQ(counts({false, false, {16, 16, 16}}), Counts(12 * 3 + 2 * 6 * (16 + 4), 1 + 1 + 4));
}

TEST(RunPlanTest, HoldsForCorrelationAndMatching) {
    const auto expectAll = [&]<typename T>() {
        for (const int mode : {0, 1}) {
            expectPlannedEverywhere<CrossCorrelationRun>(randomImage<T>({300, 200}, 2), Vector2<unsigned>{120, 80},
                                                         randomImage<T>({8, 6}, 3), mode);
        }
        HostImage image = randomImage<T>({40, 30, 20}, 2);
        const HostImage pattern = randomImage<T>({8, 6, 5}, 3), ones = randomImage<std::uint8_t>({8, 6, 5}, 4);
        HostImage filter(VoxelTypes::float32, {12, 11, 6});
        for (const Placement3d& placement : {Placement3d{true, true},
                                             {true, true, {}, true},
                                             {false, false},
                                             {false, false, {20, 16, 14}},
                                             {true, true, {20, 16, 14}}}) {
            MatchingRun run(image, pattern, VoxelTypes::uint16, placement);
            expectPlanned(run.filter);
            run.filter.inputMask = &ones;
            run.filter.frequencyFilter = &filter;
            expectPlanned(run.filter);
        }
    };
    expectAll.operator()<float>();
    expectAll.operator()<std::uint8_t>();
    expectAll.operator()<double>();
}

TEST(RunPlanTest, HoldsForNonLocalMeansInBlocks) {
    const host::ScopedDevices devices(1, (4 << 20) - 1);  // budgets are counted in whole MiB
    for (const ImageSize& size : {ImageSize{60, 50, 1}, {300, 200, 1}}) {
        HostImage image = randomImage<float>(size, 2), output(VoxelTypes::float32, size);
        CudaAdaptiveManifoldNlmFilter filter;
        filter.inputImage = &image;
        filter.outputImage = &output;
        filter.spatialSigma = 8;
        expectPlanned(filter);
        EXPECT_EQ(filter.plan().tiles == (Vector3<unsigned>{1, 1, 1}), size.x == 60);
    }
}
