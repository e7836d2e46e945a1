#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "MatchingRun.h"
#include "PlainMatching.h"
#include "PlantedParticle.h"
#include "RunChecks.h"

using namespace zel;
using namespace zel::test;

namespace {

/// How many steps a run says are done, one report after the other. It takes them one by one, or three at once where
/// neither resizing nor turning is needed.
std::vector<std::uint64_t> reportsOf(MatchingRun& run) {
    StepWatch watch;
    run.filter.run(&watch);
    for (std::size_t i = 1; i < watch.reports.size(); ++i) {
        const std::uint64_t taken = watch.reports[i] - watch.reports[i - 1];
        EXPECT_TRUE(taken == 1 || taken == 3) << "before " << watch.reports[i];
    }
    EXPECT_EQ(watch.reports.back(), watch.total);
    return watch.reports;
}

template <typename T>
class TemplateMatchingTest : public ::testing::Test {};
using Types = decltype(testedTypes(cuda::CudaTemplateMatching3d::InstanceTypes{}));
TYPED_TEST_SUITE(TemplateMatchingTest, Types);

constexpr ImageSize imageSize{13, 11, 10};
constexpr ImageSize templateSize{5, 3, 7};

}  // namespace

TYPED_TEST(TemplateMatchingTest, ScoresAreTheMaskedCorrelationCoefficient) {
    HostImage image = randomImage<TypeParam>(imageSize, 1);
    // A flat part, whose variance is below the threshold.
    for (std::size_t z = 0; z < 5; ++z)
        for (std::size_t y = 0; y < 11; ++y) std::fill_n(voxels<TypeParam>(image) + (z * 11 + y) * 13, 7, TypeParam{1});
    const HostImage sought = randomImage<TypeParam>(templateSize, 2);
    const HostImage mask = randomWeights(templateSize, -0.25, 1);
    const Doubles expected = directScores(image, sought, mask, thresholdOf(image));
    const double tolerance = sizeof(TypeParam) < 4 || std::is_same_v<TypeParam, float> ? 2e-5 : 1e-6;
    const auto check = [&](auto indexVoxel, const std::vector<Vector3<unsigned>>& tiles) {
        onAllPlacements(tiles, [&](const auto& placement) {
            MatchingRun run(image, sought, voxelTypeOf<decltype(indexVoxel)>, placement);
            run.filter.inputMask = &mask;
            EXPECT_LT(maxDifference(resultOf<float>(run), expected), tolerance);
        });
    };
    check(std::uint8_t{}, {{}, {9, 8, 10}});
    check(std::uint16_t{}, {{}});
    check(std::uint32_t{}, {{}, {1, 30, 14}});
}

TEST(TemplateMatchingTableTest, FindsTheRowOfAPlantedTemplateWhateverTheOrderOfRows) {
    PlantedParticle planted;
    planted.plantAt({10, 6, 4}, true);
    const auto table = tableOf({{"phi", {0, M_PI / 2, 0.4, M_PI}}, {"theta", {0, 0, 0.3, M_PI / 2}}});
    const auto reversed = tableOf({{"phi", {M_PI, 0.4, M_PI / 2, 0}}, {"theta", {M_PI / 2, 0.3, 0, 0}}});
    MatchingRun run(planted.volume, planted.particle, VoxelTypes::uint8, {}, table);
    const std::vector<float> scores = resultOf<float>(run);
    const auto best = std::size_t(std::max_element(scores.begin(), scores.end()) - scores.begin());
    EXPECT_EQ(best, ((4 + 2) * 16 + 6 + 2) * 24 + 10 + 2);
    EXPECT_GT(scores[best], 0.9999);
    EXPECT_EQ(run.rows<std::uint8_t>()[best], 1);
    EXPECT_EQ(resultOf<float>(MatchingRun(planted.volume, planted.particle, VoxelTypes::uint8, {}, reversed)), scores);

    // Gain and offset change nothing beyond rounding, inside the margin that 0 fills.
    for (float& voxel : std::span(voxels<float>(planted.volume), scores.size())) voxel = 3 * voxel + 50;
    EXPECT_NEAR(resultOf<float>(run)[best], scores[best], 1e-4);
    EXPECT_EQ(run.rows<std::uint8_t>()[best], 1);
}

TEST(TemplateMatchingTableTest, TakesTheStepsOfItsFormula) {
    onEachWay([](MatchingRun& run, const MatchingWay& way) {
        const std::uint64_t preparations = way.isFiltered + (way.hasMask ? 1 : 2), steps = reportsOf(run).back();
        if (way.isTiled) {
            EXPECT_EQ((steps - preparations - 2) % (12 * way.rows + 1), 0U);
            EXPECT_GT(steps - preparations - 2, 12 * way.rows + 1) << "several blocks";
        } else {
            EXPECT_EQ(steps, 13 * way.rows + preparations + 3);
        }
        if (way.rows == 0) {
            EXPECT_EQ(readAll<float>(run.hostScore)[0], std::numeric_limits<float>::lowest());
        }
    });
}

TEST(TemplateMatchingTableTest, TilesMatchTheWholeAndTheMaskOfOnesIsAMaskOfOnes) {
    HostImage image = randomImage<float>({15, 12, 11}, 9);
    const HostImage sought = randomImage<float>({4, 5, 3}, 10);
    HostImage ones(VoxelTypes::uint8, {4, 5, 3});
    std::fill_n(voxels<std::uint8_t>(ones), 60, std::uint8_t{1});
    const auto table = tableOf({{"phi", {0, 0.7, 2}}, {"theta", {0.1, 0, 1}}, {"scaleY", {1, 1.3, 1}}});
    const auto run = [&](const Vector3<unsigned>& tile) {
        return MatchingRun(image, sought, VoxelTypes::uint16, {false, false, tile}, table);
    };
    const auto expected = resultOf<float>(run({}));
    for (const Vector3<unsigned>& tile : {Vector3<unsigned>{1, 1, 1}, {12, 11, 13}, {9, 30, 9}, {18, 9, 30}}) {
        SCOPED_TRACE(testing::Message() << tile.x << " x " << tile.y << " x " << tile.z);
        EXPECT_LT(maxDifference(resultOf<float>(run(tile)), {expected.begin(), expected.end()}), 2e-5);
    }
    MatchingRun masked = run({});
    masked.filter.inputMask = &ones;
    masked.filter.maskFollowsTransformation = true;
    EXPECT_EQ(resultOf<float>(masked), expected);
}

TEST(TemplateMatchingTableTest, EndsAtEachPollAndLeavesTheNextRunRight) {
    HostImage image = randomImage<std::uint8_t>({14, 12, 11}, 11);
    const HostImage sought = randomImage<std::uint8_t>({5, 4, 3}, 12);
    onAllPlacements<Vector3<unsigned>>({{}, {12, 12, 12}}, [&](const auto& placement) {
        MatchingRun run(image, sought, VoxelTypes::uint8, placement, tableOf({{"phi", {0, 0.7}}}));
        const std::vector<std::uint64_t> reports = reportsOf(run);
        const auto expected = resultOf<float>(run);
        for (const std::uint64_t done : reports) {
            if (done + 1 >= reports.back()) break;  // in one piece the last step is not polled
            StepWatch canceller(&run.filter, done);
            EXPECT_THROW(run.filter.run(&canceller), ExceptionCancelation) << "after " << done << " steps";
        }
        EXPECT_EQ(resultOf<float>(run), expected);
    });
}
