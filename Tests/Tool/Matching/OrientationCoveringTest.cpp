#include "Matching/OrientationCovering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "zel/TemplateTransformation.h"

using namespace zel;
using zel::tool::OrientationCovering;
using Rotation = tarnway::Matrix<double, 3>;

namespace {

std::vector<Rotation> rotationsOf(const OrientationCovering& covering) {
    const tarnway::DataFrameView table(covering.columns());
    std::vector<Rotation> rotations;
    for (std::size_t row = 0; row < table.shape()[1]; ++row) {
        TemplateTransformationInfo info;
        updateTemplateTransformationInfo(&table, row, table.shape()[0], info);
        rotations.push_back(rotationMatrix(info));
    }
    return rotations;
}

/// Of the turn from one rotation to the other: its trace is 1 + 2 cos(angle).
double degreesBetween(const Rotation& a, const Rotation& b) {
    double trace = 0;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) trace += a.at(row, column) * b.at(row, column);
    return std::acos(std::clamp((trace - 1) / 2, -1.0, 1.0)) * 180 / M_PI;
}

}  // namespace

TEST(OrientationCoveringTest, SpreadsDirectionsEvenlyAndTellsItsLargestGap) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> angle(-M_PI, M_PI), height(-1, 1);
    for (const auto& [step, inPlane, isHalf, directions, turns] :
         {std::tuple{30.0, 30.0, false, 46, 12}, {24.0, 10.0, true, 36, 36}, {20.0, 360.0, false, 104, 1}}) {
        SCOPED_TRACE(testing::Message() << step << ", " << inPlane << " degrees");
        const OrientationCovering covering(step, inPlane, isHalf);
        EXPECT_EQ(covering.directionCount(), directions);  // 4 pi or 2 pi, divided by the square of the step
        EXPECT_EQ(covering.turnCount(), turns);
        const std::vector<Rotation> rows = rotationsOf(covering);
        ASSERT_EQ(rows.size(), std::size_t(directions * turns));

        // The z axes: none is much nearer to its nearest neighbour than the step.
        for (int i = 0; i < directions; ++i) {
            const Rotation& one = rows[std::size_t(i * turns)];
            EXPECT_TRUE(!isHalf || one.at(2, 2) >= 0);
            double nearest = 180;
            for (int j = 0; j < directions; ++j) {
                const Rotation& other = rows[std::size_t(j * turns)];
                double cosine = 0;
                for (std::size_t k = 0; k < 3; ++k) cosine += one.at(k, 2) * other.at(k, 2);
                if (j != i) nearest = std::min(nearest, std::acos(std::clamp(cosine, -1.0, 1.0)) * 180 / M_PI);
            }
            EXPECT_GT(nearest, 0.75 * step) << "direction " << i;
            EXPECT_LT(nearest, 1.35 * step) << "direction " << i;
        }

        const double largest = covering.largestGapDegrees();
        double largestSampled = 0;
        for (int sample = 0; sample < 3000; ++sample) {
            TemplateTransformationInfo info;
            info.phi = angle(random);
            info.psi = angle(random);
            info.theta = std::acos(isHalf ? std::abs(height(random)) : height(random));
            double gap = 180;
            for (const Rotation& row : rows) gap = std::min(gap, degreesBetween(rotationMatrix(info), row));
            largestSampled = std::max(largestSampled, gap);
        }
        EXPECT_LE(largestSampled, largest + 1e-6);
        EXPECT_GT(largestSampled, 0.85 * largest);
    }
}
