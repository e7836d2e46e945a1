#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "CrossCorrelationRun.h"
#include "DocsTable.h"
#include "PlainFilters.h"
#include "RunChecks.h"

namespace zel::test {
namespace {

using Scores = PlainVolume<double>;

/// The means over windows of the template's size, mirrored at the edges; they begin half its size before the pixel.
std::vector<double> localMeans(const Scores& image, const Scores& pattern) {
    return plainWindowFilter(
        image, rectangle(static_cast<long>(pattern.size[0]), static_cast<long>(pattern.size[1])),
        [](const auto& seen) {
            return std::accumulate(seen.begin(), seen.end(), 0.0) / static_cast<double>(seen.size());
        },
        mirrored);
}

/// Term by term.
Scores plainCorrelation(Scores image, Scores pattern, bool removesMeans) {
    const auto width = static_cast<long>(image.size[0]), height = static_cast<long>(image.size[1]);
    const auto templateWidth = static_cast<long>(pattern.size[0]), templateHeight = static_cast<long>(pattern.size[1]);
    if (removesMeans) {
        const std::vector<double> means = localMeans(image, pattern);
        std::ranges::transform(image.voxels, means, image.voxels.begin(), std::minus<>());
        const double mean = std::accumulate(pattern.voxels.begin(), pattern.voxels.end(), 0.0) /
                            static_cast<double>(pattern.voxels.size());
        for (double& voxel : pattern.voxels) voxel -= mean;
    }
    Scores scores{image.size, {}};
    for (long p = 0; p < width * height; ++p) {
        double sum = 0;
        for (long t = 0; t < templateWidth * templateHeight; ++t) {
            const long x = p % width - (templateWidth - 1) / 2 + t % templateWidth;
            const long y = p / width - (templateHeight - 1) / 2 + t / templateWidth;
            if (x < 0 || y < 0 || x >= width || y >= height) continue;
            sum += image.voxels[static_cast<std::size_t>(y * width + x)] * pattern.voxels[static_cast<std::size_t>(t)];
        }
        scores.voxels.push_back(sum);
    }
    return scores;
}

Scores plainOf(const HostImage& image) {
    Scores plain{{image.getDimension(0), image.getDimension(1), 1}, {}};
    visitVoxelType(image.getDataType(), RealTypes{}, [&]<typename T>() {
        for (const T voxel : readAll<T>(image)) plain.voxels.push_back(static_cast<double>(voxel));
    });
    return plain;
}

/// The scores of a run before they were rescaled.
std::vector<double> unscaled(const CrossCorrelationRun& run, const std::vector<float>& scores) {
    const double low = *run.measurement.minimumCorrelation.data(), high = *run.measurement.maximumCorrelation.data();
    std::vector<double> result;
    for (const float score : scores) result.push_back(low + (score + 1.0) / 2 * (high - low));
    return result;
}

/// The run's scores and its measurement are those of the sums, within `error` of their range. The scores themselves
/// are floats.
void expectScores(CrossCorrelationRun& run, const Scores& expected, double error) {
    const std::vector<float> scores = resultOf<float>(run);
    const auto [low, high] = std::minmax_element(expected.voxels.begin(), expected.voxels.end());
    const double range = *high - *low;
    ASSERT_EQ(run.measurement.bestPositionX.shape().size(), 1u);
    EXPECT_NEAR(*run.measurement.minimumCorrelation.data(), *low, error * range);
    EXPECT_NEAR(*run.measurement.maximumCorrelation.data(), *high, error * range);
    const std::vector<double> found = unscaled(run, scores);
    double worst = 0;
    for (std::size_t i = 0; i < found.size(); ++i) worst = std::max(worst, std::abs(found[i] - expected.voxels[i]));
    EXPECT_LE(worst, std::max(error, 2e-7) * range);

    std::vector<double> sorted = expected.voxels;
    std::sort(sorted.rbegin(), sorted.rend());
    if (sorted.size() > 1 && sorted[0] - sorted[1] <= 2 * error * range) return;
    const auto best = static_cast<std::size_t>(high - expected.voxels.begin());
    EXPECT_EQ(*run.measurement.bestPositionX.data(), best % expected.size[0]);
    EXPECT_EQ(*run.measurement.bestPositionY.data(), best / expected.size[0]);
}

template <typename T>
class CrossCorrelationTest : public ::testing::Test {};
TYPED_TEST_SUITE(CrossCorrelationTest, decltype(testedTypes(KernelTypes{})));

TYPED_TEST(CrossCorrelationTest, EqualsTheSumsInEachPlaceAndTile) {
    using T = TypeParam;
    constexpr bool isWide = sizeof(T) == 8 || (sizeof(T) == 4 && !std::is_same_v<T, float>);
    const double error = isWide ? 1e-9 : 1e-4;
    const std::vector<Vector2<unsigned>> tiles{{0, 0}, {1, 1}, {9, 14}, {18, 6}};
    const struct {
        ImageSize image, pattern;
    } shapes[] = {{{17, 11}, {1, 1}}, {{20, 13}, {2, 2}}, {{19, 22}, {4, 3}},
                  {{16, 15}, {5, 5}}, {{9, 8}, {9, 8}},   {{25, 1}, {6, 1}}};
    for (const auto& shape : shapes) {
        HostImage image = randomImage<T>(shape.image, 3);
        const HostImage pattern = randomImage<T>(shape.pattern, 4);
        for (const int mode : {0, 1}) {
            if (mode == 1 && shape.pattern.x * shape.pattern.y == 1) continue;  // all scores are 0
            SCOPED_TRACE(testing::Message() << shape.image.x << " x " << shape.image.y << ", template "
                                            << shape.pattern.x << " x " << shape.pattern.y << ", mode " << mode);
            const Scores expected = plainCorrelation(plainOf(image), plainOf(pattern), mode == 1);
            onAllPlacements(tiles, [&](const Placement& placement) {
                CrossCorrelationRun run(image, pattern, mode, placement);
                expectScores(run, expected, error);
            });
        }
    }
}

TEST(CrossCorrelationRunTest, ConstantScoresAreTheLowestAndAMeasurementMayBeMissing) {
    HostImage image = randomImage<std::uint8_t>({6, 5}, 1);
    HostImage pattern(VoxelTypes::uint8, {1, 1});
    CrossCorrelationRun run(image, pattern, 0, {});
    EXPECT_EQ(resultOf<float>(run), std::vector<float>(30, -1.0f));
    run.filter.outputMeasurement = nullptr;
    EXPECT_EQ(resultOf<float>(run), std::vector<float>(30, -1.0f));
    // A template of one pixel is its mean.
    EXPECT_EQ(resultOf<float>(CrossCorrelationRun(image, randomImage<std::uint8_t>({1, 1}, 2), 1, {})),
              std::vector<float>(30, -1.0f));
}

TEST(CrossCorrelationRunTest, OtherModesArePlainInOnePieceAndTakeMeansOffInTiles) {
    HostImage image = randomImage<std::uint8_t>({30, 20}, 1);
    const HostImage pattern = randomImage<std::uint8_t>({4, 3}, 2);
    for (const Placement& placement : {Placement{}, {true, true, {16, 16}}}) {
        EXPECT_EQ(resultOf<float>(CrossCorrelationRun(image, pattern, 7, placement)),
                  resultOf<float>(CrossCorrelationRun(image, pattern, placement.tiled() ? 1 : 0, placement)));
    }
}

// Its rows: the input, then the correlation and its score in both modes.
TEST(CrossCorrelationRunTest, GivesTheNumbersOfItsPage) {
    const DocsTable page("cross-correlation.md", "template 1 3 2");
    ASSERT_EQ(page.rows, 5u);
    const auto row = [&](std::size_t number) {
        return page.numbers.begin() + static_cast<long>(number * page.columns);
    };
    HostImage image(VoxelTypes::uint8, {page.columns, 1}), pattern(VoxelTypes::uint8, {3, 1});
    std::copy(row(0), row(1), voxels<std::uint8_t>(image));
    std::copy_n(std::array{1, 3, 2}.begin(), 3, voxels<std::uint8_t>(pattern));
    for (const int mode : {0, 1}) {
        CrossCorrelationRun run(image, pattern, mode, {});
        const std::vector<float> scores = resultOf<float>(run);
        const std::vector<double> correlation = unscaled(run, scores);
        for (std::size_t x = 0; x < page.columns; ++x) {
            EXPECT_NEAR(correlation[x], row(1 + 2 * static_cast<std::size_t>(mode))[static_cast<long>(x)], 1e-4);
            EXPECT_NEAR(scores[x], row(2 + 2 * static_cast<std::size_t>(mode))[static_cast<long>(x)], 5.1e-4);
        }
    }
}

// Each step has its poll but for the transfer of the image, and for the download of an image in one piece.
TEST(CrossCorrelationRunTest, EndsAtEachPollAndCountsItsSteps) {
    HostImage image = randomImage<std::uint16_t>({30, 20}, 1);
    const HostImage pattern = randomImage<std::uint16_t>({3, 4}, 2);
    for (const int mode : {0, 1}) {
        onAllPlacements(std::vector<Vector2<unsigned>>{{0, 0}, {16, 16}}, [&](const Placement& placement) {
            CrossCorrelationRun run(image, pattern, mode, placement);
            StepWatch watch;
            run.filter.run(&watch);
            const std::uint64_t inputs = placement.inputOnDevice ? 0 : 1, outputs = placement.outputOnDevice ? 0 : 1;
            // Extended to 32 x 23: 3 x 2 tiles in both modes.
            constexpr std::uint64_t blocks = 3 * 2;
            EXPECT_EQ(watch.total, placement.tiled() ? (mode == 1 ? 6 : 5) * blocks + 7
                                                     : (mode == 1 ? 8 : 6) + 2 * inputs + outputs);
            const std::uint64_t done = placement.tiled() ? watch.total - 4 : watch.total - inputs;
            const std::uint64_t polls = placement.tiled() ? done - 1 : done - outputs;
            for (std::uint64_t steps = 0; steps <= done; ++steps) {
                StepWatch canceller(&run.filter, steps);
                if (steps < polls)
                    EXPECT_THROW(run.filter.run(&canceller), ExceptionCancelation) << steps;
                else
                    EXPECT_NO_THROW(run.filter.run(&canceller)) << steps;
            }
        });
    }
}

}  // namespace
}  // namespace zel::test
