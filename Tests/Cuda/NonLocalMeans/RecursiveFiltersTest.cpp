#include <gtest/gtest.h>

#include <cmath>

#include "AmnlmData.h"
#include "NonLocalMeans/CudaAmnlmHFilter.h"
#include "NonLocalMeans/CudaAmnlmRFFilter.h"

namespace zel::test {
namespace {

using Extents = AmnlmData::Extents;
using Values = std::vector<double>;

/// Both sweeps over a line of which position p has its value at line[p * stride].
/// @param weights    of the steps between the positions p - 1 and p.
/// @param recursive  whether the forward sweep takes the values that it wrote.
void sweepLine(double* line, std::size_t stride, const Values& weights, bool recursive) {
    const std::size_t length = weights.size();
    Values source(length);
    for (std::size_t p = 0; p < length; ++p) source[p] = line[p * stride];
    for (std::size_t p = 1; p < length; ++p) {
        const double before = recursive ? line[(p - 1) * stride] : source[p - 1];
        line[p * stride] += weights[p] * (before - source[p]);
    }
    for (std::size_t p = length - 1; p-- > 0;)
        line[p * stride] += weights[p + 1] * (line[(p + 1) * stride] - line[p * stride]);
}

/// Sweeps along x, y and z, one after the other.
/// @param weightBetween  of the step from one voxel to the next.
template <typename Weight>
Values plainSweeps(const std::vector<float>& in, const Extents& extents, bool recursiveAlongX,
                   const Weight& weightBetween) {
    Values values(in.begin(), in.end());
    const std::size_t channels = extents[3];
    const std::size_t voxels = in.size() / channels;
    std::size_t step = 1;
    for (const int axis : {2, 1, 0}) {
        const std::size_t length = extents[axis];
        for (std::size_t v = 0; v < voxels; ++v) {
            if (v / step % length != 0) continue;
            Values weights(length);
            for (std::size_t p = 1; p < length; ++p) weights[p] = weightBetween(v + (p - 1) * step, v + p * step);
            for (std::size_t k = 0; k < channels; ++k)
                sweepLine(&values[v * channels + k], step * channels, weights, axis != 2 || recursiveAlongX);
        }
        step *= length;
    }
    return values;
}

void expectNear(const std::vector<float>& result, const Values& expected, double tolerance) {
    ASSERT_EQ(result.size(), expected.size());
    for (std::size_t i = 0; i < result.size(); ++i) ASSERT_NEAR(result[i], expected[i], tolerance) << i;
}

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
            const double a = std::exp(-std::sqrt(2.0) / sigma);
            const auto weight = [=](std::size_t, std::size_t) { return a; };
            expectNear(filteredH(extents, values, sigma), plainSweeps(values, extents, false, weight), 2e-6);
        }
}

TEST(RFFilterTest, SweepsAlongAllAxesByTheDistancesOfTheJointImage) {
    for (const Extents& extents : shapes)
        for (const int channels : {1, 2, 3, 4}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(extents) << ", joint of " << channels);
            const std::vector<float> values = uniformValues(extents, -1, 1, 4);
            const std::size_t voxels = values.size() / extents[3];
            const Joint joint{channels, uniformValues(voxels * channels, 0, 1, 5)};
            const double spatialSigma = 3, rangeSigma = 0.75;
            const auto weight = [&](std::size_t from, std::size_t to) {
                double square = 0;
                for (int k = 0; k < channels; ++k)
                    square += std::pow(joint.values[from * channels + k] - joint.values[to * channels + k], 2);
                const double length = std::sqrt(1 + std::pow(spatialSigma / rangeSigma, 2) * square);
                return std::pow(std::exp(-std::sqrt(2.0) / spatialSigma), length);
            };
            expectNear(filteredRF(extents, values, joint, 0.75f, 3), plainSweeps(values, extents, true, weight), 2e-6);
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
