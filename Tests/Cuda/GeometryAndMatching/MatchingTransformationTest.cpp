// Scores and best rows of transformed and filtered templates, against plain sums over plainly transformed ones.

#include <complex>
#include <numbers>

#include "MatchingRun.h"
#include "PlainMatching.h"

using namespace zel;
using namespace zel::test;

namespace {

constexpr ImageSize imageSize{12, 11, 10};

HostImage withSpacing(HostImage image, const std::array<double, 3>& spacing) {
    for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, spacing[std::size_t(axis)]);
    return image;
}

/// Scores of each row.
std::vector<Doubles> scoresOfRows(const HostImage& image, const HostImage& pattern, const HostImage& mask,
                                  const tarnway::DataFrameView& table, bool follows) {
    std::vector<Doubles> scores;
    const std::array<double, 3> spacing{image.getSpacing(0), image.getSpacing(1), image.getSpacing(2)};
    for (std::size_t row = 0; row < table.shape()[1]; ++row) {
        TemplateTransformationInfo info;
        updateTemplateTransformationInfo(&table, row, table.shape()[0], info);
        const HostImage t = transformed(PlainVolume(pattern), info, follows, spacing).image();
        if (!follows) info.hasRotation = false;
        const HostImage M = transformed(PlainVolume(mask), info, follows, spacing).image();
        scores.push_back(directScores(image, t, M, thresholdOf(image)));
    }
    return scores;
}

void expectBest(MatchingRun& run, const std::vector<Doubles>& rows, double tolerance) {
    const auto scores = resultOf<float>(run);
    const auto numbers = run.rows<std::uint8_t>();
    for (std::size_t i = 0; i < scores.size(); ++i) {
        double best = -2;
        for (const Doubles& row : rows) best = std::max(best, row[i]);
        ASSERT_NEAR(scores[i], best, tolerance) << "voxel " << i;
        ASSERT_LT(numbers[i], rows.size());
        ASSERT_NEAR(rows[numbers[i]][i], best, tolerance) << "voxel " << i << ", row " << int(numbers[i]);
    }
}

}  // namespace

TEST(MatchingTransformationTest, ScoresAreThoseOfThePlainlyTransformedTemplate) {
    using Columns = std::vector<tarnway::DataFrameView::Column>;
    const Columns turns{{"phi", {0.4, 0, -1.1}}, {"theta", {0.3, 0, 2}}, {"psi", {-0.7, 0, 0.2}}};
    const Columns scales{{"scaleX", {1.3, 1, 0.7}}, {"scaleZ", {1, 1, 1.5}}};
    Columns both = turns;
    both.insert(both.end(), scales.begin(), scales.end());
    struct Case {
        const char* name;
        Columns columns;
        bool follows;
        std::array<double, 3> templateSpacing;
    };
    for (const auto& [name, columns, follows, spacing] :
         {Case{"turned, the mask too", turns, true, {1, 1, 1}}, Case{"turned under the mask", turns, false, {1, 1, 1}},
          Case{"scaled", scales, false, {1, 1, 1}}, Case{"scaled and turned", both, true, {1, 1, 1}},
          Case{"other spacings", {{"phi", {0}}}, false, {1.5, 0.8, 1}},
          Case{"other spacings, scaled", scales, true, {1.2, 1, 0.6}},
          Case{"other spacings, turned", turns, true, {1.4, 1.4, 1.4}}}) {
        SCOPED_TRACE(name);
        HostImage image = randomImage<double>(imageSize, 1);
        const HostImage pattern = withSpacing(randomImage<double>({4, 5, 3}, 2), spacing);
        const HostImage mask = withSpacing(randomWeights({4, 5, 3}, 0.3, 0.9), spacing);
        const auto table = tableOf(columns);
        const std::vector<Doubles> expected = scoresOfRows(image, pattern, mask, *table, follows);
        for (const Vector3<unsigned>& tile : {Vector3<unsigned>{}, {12, 1, 11}}) {
            MatchingRun run(image, pattern, VoxelTypes::uint8, {false, false, tile}, table);
            run.filter.inputMask = &mask;
            run.filter.maskFollowsTransformation = follows;
            expectBest(run, expected, 1e-5);
        }
    }
}

namespace {

/// A volume through its Fourier sum, each frequency multiplied by gain(kx, ky, kz), cycles per volume around 0.
template <typename Gain>
PlainVolume filtered(const PlainVolume& source, const Gain& gain) {
    const std::size_t count = source.voxels.size();
    const auto phase = [&](std::size_t voxel, std::size_t frequency) {
        const auto p = source.positionOf(voxel), k = source.positionOf(frequency);
        double turns = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) turns += p[axis] * k[axis] / double(source.size[axis]);
        return std::polar(1.0, 2 * std::numbers::pi * turns);
    };
    std::vector<std::complex<double>> spectrum(count), voxels(count);
    for (std::size_t k = 0; k < count; ++k) {
        for (std::size_t i = 0; i < count; ++i) spectrum[k] += source.voxels[i] * std::conj(phase(i, k));
        auto around0 = source.positionOf(k);
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (around0[axis] > double(source.size[axis]) / 2) around0[axis] -= double(source.size[axis]);
        spectrum[k] *= gain(around0[0], around0[1], around0[2]);
        for (std::size_t i = 0; i < count; ++i) voxels[i] += spectrum[k] * phase(i, k);
    }
    PlainVolume result = source;
    for (std::size_t i = 0; i < count; ++i) result.voxels[i] = voxels[i].real() / double(count);
    return result;
}

}  // namespace

// A low pass with a missing wedge; filters of the box's size and larger ones, for even and odd boxes.
TEST(MatchingTransformationTest, AFrequencyFilterActsOnTheTemplateBeforeItIsStandardized) {
    const auto gain = [](double kx, double ky, double kz) {
        return std::abs(kz) > 1.5 * std::abs(kx) ? 0 : 1 / (1 + kx * kx + 0.5 * ky * ky + 0.2 * kz * kz);
    };
    for (const auto& [templateSize, extra] :
         {std::pair{ImageSize{5, 4, 3}, 0}, {ImageSize{6, 5, 4}, 0}, {ImageSize{5, 3, 4}, 3}}) {
        SCOPED_TRACE(testing::Message() << templateSize.x << " x " << templateSize.y << ", " << extra);
        HostImage image = randomImage<double>(imageSize, 1);
        const HostImage pattern = randomImage<double>(templateSize, 2), mask = randomWeights(templateSize, 0.3, 0.9);
        const auto more = std::size_t(extra);
        PlainVolume filter({long(templateSize.x + 1 + more), long(templateSize.y + more), long(templateSize.z + more)},
                           {1, 1, 1});
        filter.fillWith([&](const std::array<double, 3>& p) {
            return gain(p[0] - double(filter.size[0] / 2), p[1] - double(filter.size[1] / 2),
                        p[2] - double(filter.size[2] / 2));
        });
        const HostImage filterImage = filter.image();
        const HostImage t = filtered(PlainVolume(pattern), gain).image();
        for (const Vector3<unsigned>& tile : {Vector3<unsigned>{}, {9, 9, 9}}) {
            MatchingRun run(image, pattern, VoxelTypes::uint8, {false, false, tile});
            run.filter.inputMask = &mask;
            run.filter.frequencyFilter = &filterImage;
            expectBest(run, {directScores(image, t, mask, thresholdOf(image))}, 1e-5);
        }
    }
}
