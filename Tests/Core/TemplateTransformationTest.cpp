#include "zel/TemplateTransformation.h"

#include "PlainMatching.h"

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
    using Info = TemplateTransformationInfo;
    const std::pair<const char*, double Info::*> columns[]{{"phi", &Info::phi},       {"theta", &Info::theta},
                                                           {"psi", &Info::psi},       {"scaleX", &Info::scaleX},
                                                           {"scaleY", &Info::scaleY}, {"scaleZ", &Info::scaleZ}};
    for (const auto& [name, field] : columns) {
        SCOPED_TRACE(name);
        const bool isScale = std::string(name).starts_with("scale");
        const double neutral = isScale ? 1 : 0;
        const DataFrameView table({{name, {neutral, 0.5}}});
        Info info;
        info.theta = info.scaleY = 7;
        updateTemplateTransformationInfo(&table, 1, 1, info);
        EXPECT_EQ(info.*field, 0.5);
        EXPECT_EQ(info.phi + info.theta + info.psi + info.scaleX + info.scaleY + info.scaleZ, 3 - neutral + 0.5);
        EXPECT_EQ(info.hasScale, isScale);
        EXPECT_EQ(info.hasRotation, !isScale);
        updateTemplateTransformationInfo(&table, 0, 1, info);
        EXPECT_FALSE(info.hasRotation || info.hasScale);
        info.hasScale = true;
        updateTemplateTransformationInfo(nullptr, 0, 0, info);
        EXPECT_FALSE(info.hasScale);
    }
}

TEST(TemplateTransformationTest, TurnsAboutZThenXThenZ) {
    TemplateTransformationInfo info;
    info.psi = 0.3;
    info.theta = 0.4;
    info.phi = 0.5;
    for (const std::size_t axis : {0, 1, 2}) {
        Spacing unit{};
        unit[axis] = 1;
        const Spacing turned = test::Turn{info, {}}.forth(unit);
        for (const std::size_t row : {0, 1, 2}) EXPECT_NEAR(rotationMatrix(info).at(row, axis), turned[row], 1e-15);
    }
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
