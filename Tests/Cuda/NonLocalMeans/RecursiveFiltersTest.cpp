#include <gtest/gtest.h>

#include <utility>

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
    AmnlmData data(extents, values);
    const AmnlmData guide(withChannels(extents, joint.channels), joint.values);
    AmnlmData out(extents), moved(extents);
    amnlm::rfFilter(data, guide, rangeSigma, spatialSigma, out);
    amnlm::rfFilter(std::move(data), guide, rangeSigma, spatialSigma, moved);
    EXPECT_EQ(moved.values(), out.values());
    return out.values();
}

// Lengths and counts of lines around the sizes of bundles, channel counts with and without a form of their own.
const Extents shapes[] = {{1, 1, 1, 1},   {1, 1, 9, 2},   {1, 13, 1, 4}, {6, 1, 1, 1}, {1, 70, 90, 1}, {2, 17, 16, 1},
                          {3, 21, 35, 2}, {9, 17, 66, 4}, {4, 5, 6, 3},  {2, 2, 2, 5}, {9, 20, 85, 5}, {5, 70, 33, 1}};

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

}  // namespace
}  // namespace zel::test
