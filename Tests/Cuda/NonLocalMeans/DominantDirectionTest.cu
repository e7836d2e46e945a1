#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "AmnlmData.h"
#include "DeviceVectorOperations.h"
#include "NonLocalMeans/CudaAmnlmEigenvec.h"

namespace zel::test {
namespace {

// One step of power iteration on a cluster's scatter matrix, from the start that the seed draws.
TEST(DominantDirectionTest, IsAStepOfPowerIterationWithinTheCluster) {
    const AmnlmData::Extents extents{3, 5, 7, 4};
    const std::vector<float> values = uniformValues(extents, -1, 1, 8);
    std::vector<bool> cluster;
    for (int i = 0; i < 105; ++i) cluster.push_back(i % 3 != 0);
    std::srand(2);
    double start[4], sum[4] = {};
    for (double& s : start) s = static_cast<float>(std::rand() >> 16) / 32767.0f - 0.5f;
    for (std::size_t v = 0; v < 105; ++v) {
        double dot = 0;
        for (std::size_t k = 0; k < 4; ++k) dot += start[k] * values[4 * v + k];
        for (std::size_t k = 0; k < 4; ++k) sum[k] += cluster[v] ? dot * values[4 * v + k] : 0;
    }
    const double length = std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2] + sum[3] * sum[3]);
    std::srand(2);
    AmnlmData difference(extents, values);
    DeviceVector<float> direction(4);
    amnlm::computeDominantDirection(difference, DeviceVector<bool>(cluster), 1, direction);
    for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(direction[k], sum[k] / length, 1e-5);

    amnlm::computeDominantDirection(difference, DeviceVector<bool>(105, false), 1, direction);
    EXPECT_TRUE(std::isnan(static_cast<float>(direction[0]))) << "of an empty cluster";
}

}  // namespace
}  // namespace zel::test
