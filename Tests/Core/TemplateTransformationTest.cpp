#include "zel/TemplateTransformation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace zel;
using tarnway::DataFrameView;

namespace {

using Size = std::array<std::size_t, 3>;
using Spacing = std::array<double, 3>;

/// The smallest and the largest box.
std::pair<Size, Size> boxes(const std::vector<DataFrameView::Column>& columns, const Size& size,
                            const Spacing& templateSpacing = {1, 1, 1}, const Spacing& imageSpacing = {1, 1, 1}) {
    const DataFrameView table(columns);
    std::pair<Size, Size> result;
    computeMinimalMaximalBoxSize(columns.empty() ? nullptr : &table, size, templateSpacing, imageSpacing, result.first,
                                 result.second);
    return result;
}

}  // namespace

TEST(TemplateTransformationTest, ReadsTheColumnsThatARowHas) {
    const DataFrameView table({{"scaleY", {1, 3}}, {"psi", {0, 0.5}}});
    TemplateTransformationInfo info;
    info.theta = 7;
    updateTemplateTransformationInfo(&table, 1, 2, info);
    EXPECT_EQ(info.psi, 0.5);
    EXPECT_EQ(info.theta, 0);
    EXPECT_EQ(info.scaleY, 3);
    EXPECT_EQ(info.scaleX, 1);
    EXPECT_TRUE(info.hasRotation && info.hasScale);
    updateTemplateTransformationInfo(&table, 0, 2, info);
    EXPECT_FALSE(info.hasRotation || info.hasScale) << "angles of 0 and scales of 1 change nothing";
    info.hasScale = true;
    updateTemplateTransformationInfo(nullptr, 0, 0, info);
    EXPECT_FALSE(info.hasScale);
}

TEST(TemplateTransformationTest, TurnsAboutZThenXThenZ) {
    TemplateTransformationInfo info;
    const auto turned = [&](std::size_t axis) {
        const auto matrix = rotationMatrix(info);
        return Spacing{matrix.at(0, axis), matrix.at(1, axis), matrix.at(2, axis)};
    };
    info.psi = M_PI / 2;  // x to y
    EXPECT_NEAR(turned(0)[1], 1, 1e-15);
    info.theta = M_PI / 2;  // and that to z
    EXPECT_NEAR(turned(0)[2], 1, 1e-15);
    info.phi = M_PI / 2;  // which phi leaves, while it takes y, by now at -x, to -y
    EXPECT_NEAR(turned(0)[2], 1, 1e-15);
    EXPECT_NEAR(turned(1)[1], -1, 1e-15);
}

TEST(TemplateTransformationTest, BoxesHoldTheTemplateUnderEachRow) {
    const double quarter = M_PI / 2;
    EXPECT_EQ(boxes({}, {10, 20, 30}), std::pair(Size{10, 20, 30}, Size{10, 20, 30}));
    EXPECT_EQ(boxes({{"phi", {quarter}}}, {10, 20, 30}), std::pair(Size{20, 10, 30}, Size{20, 20, 30}));
    EXPECT_EQ(boxes({{"theta", {quarter, 0}}}, {10, 20, 30}), std::pair(Size{10, 20, 20}, Size{10, 30, 30}));
    EXPECT_EQ(boxes({{"phi", {M_PI / 4}}}, {11, 11, 3}).second, (Size{15, 15, 3})) << "10 times the root of 2, and 1";
    EXPECT_EQ(boxes({{"scaleX", {0.01, 0.5}}}, {10, 1, 1}), std::pair(Size{1, 1, 1}, Size{10, 1, 1}));
    EXPECT_EQ(boxes({{"scaleX", {2.25}}}, {10, 1, 1}).second, (Size{23, 1, 1})) << "half a voxel is rounded away";
    EXPECT_EQ(boxes({}, {10, 4, 4}, {2, 1, 1}, {1, 1, 4}), std::pair(Size{20, 4, 1}, Size{20, 4, 4}));
    EXPECT_EQ(boxes({{"phi", {quarter}}}, {10, 4, 4}, {2, 2, 2}).second, (Size{10, 19, 7}))
        << "resampled from centre to centre: 9 and 3 voxels of 2, and 1";
    EXPECT_EQ(boxes({{"phi", {}}}, {10, 4, 4}).second, (Size{10, 4, 4})) << "a table without rows";
}
