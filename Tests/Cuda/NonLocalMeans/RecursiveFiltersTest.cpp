#include <gtest/gtest.h>

#include "NonLocalMeans/CudaAmnlmHFilter.h"
#include "NonLocalMeans/CudaAmnlmRFFilter.h"
#include "PlainAmnlm.h"

namespace zel::test {
namespace {

std::vector<float> filteredH(const Extents& extents, const std::vector<float>& values, float sigma) {
    const AmnlmData in(extents, values);
    AmnlmData out(extents);
    amnlm::hFilter(in, sigma, out);
    return out.values();
}

struct Joint {
    int channels;
    std::vector<float> values;
};
std::vector<float> filteredRF(const Extents& extents, const std::vector<float>& values, const Joint& joint,
                              float rangeSigma, float spatialSigma) {
    const AmnlmData data(extents, values);
    const AmnlmData guide({extents[0], extents[1], extents[2], joint.channels}, joint.values);
    AmnlmData out(extents);
    amnlm::rfFilter(data, guide, rangeSigma, spatialSigma, out);
    return out.values();
}

const Extents shapes[] = {{1, 1, 1, 1},   {1, 1, 9, 2},   {1, 13, 1, 4}, {6, 1, 1, 1}, {1, 70, 90, 1},
                          {3, 21, 35, 2}, {9, 17, 66, 4}, {4, 5, 6, 3},  {2, 2, 2, 5}};

TEST(HFilterTest, SweepsAlongAllAxes) {
    for (const Extents& extents : shapes)
        for (const float sigma : {0.5f, 4.0f}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(extents) << ", sigma " << sigma);
            const std::vector<float> values = uniformValues(extents, -1, 1, 3);
            expectNear(filteredH(extents, values, sigma), plainHFilter({values.begin(), values.end()}, extents, sigma),
                       2e-6);
        }
}

TEST(RFFilterTest, SweepsAlongAllAxesByTheDistancesOfTheJointImage) {
    for (const Extents& extents : shapes)
        for (const int channels : {1, 2, 3, 4}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(extents) << ", joint of " << channels);
            const std::vector<float> values = uniformValues(extents, -1, 1, 4);
            const std::size_t voxels = values.size() / extents[3];
            const Joint joint{channels, uniformValues(voxels * channels, 0, 1, 5)};
            const Values plain = plainRFFilter({values.begin(), values.end()}, extents,
                                               {joint.values.begin(), joint.values.end()}, 0.75, 3);
            expectNear(filteredRF(extents, values, joint, 0.75f, 3), plain, 2e-6);
        }
}

TEST(RecursiveFiltersTest, ConstantsStay) {
    const Extents extents{3, 40, 50, 2};
    const std::vector<float> constant(3 * 40 * 50 * 2, 0.3f);
    EXPECT_EQ(filteredH(extents, constant, 5), constant);
    EXPECT_EQ(filteredRF(extents, constant, {1, uniformValues(3 * 40 * 50, 0, 1, 6)}, 0.1f, 5), constant);
}

// A jump of the joint image lets nothing through, in either direction.
TEST(RFFilterTest, StopsAtAJumpOfTheJointImage) {
    const Extents extents{1, 8, 32, 1};
    std::vector<float> sides(8 * 32);
    for (std::size_t i = 0; i < sides.size(); ++i) sides[i] = i % 32 < 16 ? 0.0f : 1.0f;
    EXPECT_EQ(filteredRF(extents, sides, {1, sides}, 0.01f, 8), sides);
    EXPECT_NE(filteredRF(extents, sides, {1, std::vector<float>(8 * 32)}, 0.01f, 8), sides);
}

}  // namespace
}  // namespace zel::test
