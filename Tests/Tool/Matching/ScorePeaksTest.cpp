#include "Matching/ScorePeaks.h"

#include <cmath>

#include "TestImages.h"

using namespace zel;
using namespace zel::test;
using tool::Peak;
using tool::PeakSelection;

namespace {

std::vector<std::size_t> columnsOf(const std::vector<Peak>& peaks) {
    std::vector<std::size_t> columns;
    for (const Peak& peak : peaks) columns.push_back(peak.position[0]);
    return columns;
}

double distance(const Peak& a, const Peak& b) {
    double squares = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        squares += std::pow(double(a.position[axis]) - double(b.position[axis]), 2);
    return std::sqrt(squares);
}

}  // namespace

TEST(ScorePeaksTest, TakesTheBestMaximaThatAreFarEnoughApart) {
    using Columns = std::vector<std::size_t>;
    const HostImage scores = imageOf<float>({10}, {3, 1, 5, 5, 2, 4, std::nanf(""), 6, 0, 7});
    const auto found = [&](const PeakSelection& selection) { return columnsOf(findPeaks(scores, selection)); };
    EXPECT_EQ(found({}), (Columns{9, 7, 2, 5, 0})) << "of the equal neighbours the first";
    EXPECT_EQ(found({.distance = 2}), found({})) << "just far enough";
    EXPECT_EQ(found({.distance = 2.1}), (Columns{9, 2, 5}));
    EXPECT_EQ(found({.distance = 100}), (Columns{9}));
    EXPECT_EQ(found({.maxCount = 2}), (Columns{9, 7}));
    EXPECT_EQ(found({.threshold = 5}), (Columns{9, 7, 2}));
    EXPECT_EQ(found({.threshold = 8}), (Columns{}));
}

// Distances and neighbours along all axes, against the definition.
TEST(ScorePeaksTest, KeepsItsWordInVolumes) {
    const HostImage scores = randomImage<double>({17, 13, 11}, 6);
    const auto value = [&](std::size_t x, std::size_t y, std::size_t z) {
        return static_cast<const double*>(scores.hostDataReadOnly())[(z * 13 + y) * 17 + x];
    };
    const std::vector<Peak> maxima = tool::findPeaks(scores, {});
    std::size_t count = 0;
    for (std::size_t voxel = 0; voxel < 17 * 13 * 11; ++voxel) {
        const std::size_t x = voxel % 17, y = voxel / 17 % 13, z = voxel / 17 / 13;
        bool isMaximum = true;
        for (std::size_t n = 0; n < 27; ++n) {
            const std::size_t i = x + n % 3 - 1, j = y + n / 3 % 3 - 1, k = z + n / 9 - 1;
            isMaximum &= i >= 17 || j >= 13 || k >= 11 || value(i, j, k) <= value(x, y, z);
        }
        count += isMaximum;
    }
    EXPECT_EQ(maxima.size(), count);
    const std::vector<Peak> apart = tool::findPeaks(scores, {.distance = 4.5});
    EXPECT_LT(apart.size(), maxima.size());
    for (const Peak& maximum : maxima) {
        // Each maximum is a peak, or has a better peak nearby.
        const auto reason =
            std::find_if(apart.begin(), apart.end(), [&](const Peak& peak) { return distance(peak, maximum) < 4.5; });
        ASSERT_NE(reason, apart.end());
        EXPECT_GE(reason->score, maximum.score);
        EXPECT_EQ(maximum.score, value(maximum.position[0], maximum.position[1], maximum.position[2]));
    }
    for (const Peak& a : apart)
        for (const Peak& b : apart) EXPECT_TRUE(&a == &b || distance(a, b) >= 4.5);
}
