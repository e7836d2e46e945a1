// The principal directions of patch space, and the projection on them.

#include <gtest/gtest.h>

#include <cmath>

#include "AmnlmData.h"
#include "NonLocalMeans/CudaAmnlmPCA.h"
#include "NonLocalMeans/CudaAmnlmRPatches.h"

namespace zel::test {
namespace {

/// Samples of `P` values: a few directions with spreads that halve from one to the next, and a mean.
TEST(PatchSpaceTest, DirectionsAreTheLeadingOnesOfTheSample) {
    constexpr std::size_t P = 27, samples = 300;
    // Cosines of different frequency are orthogonal; of frequency 0, all values are alike.
    const auto direction = [](std::size_t k, std::size_t p) {
        return std::sqrt((k == 0 ? 1.0 : 2.0) / P) *
               std::cos(M_PI * static_cast<double>(k) * (static_cast<double>(p) + 0.5) / P);
    };
    std::vector<float> values(P * samples);
    const std::vector<float> spreads = uniformValues(4 * samples, -1, 1, 5);
    for (std::size_t n = 0; n < samples; ++n)
        for (std::size_t p = 0; p < P; ++p)
            for (std::size_t k = 0; k < 4; ++k)
                values[n * P + p] += static_cast<float>((k == 0 ? 3 : 0) + std::pow(0.3, static_cast<double>(k)) *
                                                                               spreads[4 * n + k] * direction(k, p));
    AmnlmData patches({3, 3, 3, samples}, values), found({1, 4, P, 1});
    ASSERT_TRUE(amnlm::computePcaEigenvectors(found, patches, 4, 100));
    const std::vector<float> directions = found.values();
    for (std::size_t k = 0; k < 4; ++k) {
        double along = 0;
        for (std::size_t p = 0; p < P; ++p) along += directions[k * P + p] * direction(k, p);
        EXPECT_GT(along, 0.98) << "direction " << k;
        EXPECT_GE(directions[k * P], 0);
        for (std::size_t j = 0; j <= k; ++j) {
            double dot = 0;
            for (std::size_t p = 0; p < P; ++p) dot += double(directions[k * P + p]) * directions[j * P + p];
            EXPECT_NEAR(dot, j == k ? 1 : 0, 1e-4);
        }
    }
    EXPECT_FALSE(amnlm::computePcaEigenvectors(found, patches, 4, 0)) << "no turn";
}

TEST(PatchSpaceTest, ZeroPatchesHaveZeroDirections) {
    AmnlmData patches({3, 3, 3, 5}, std::vector<float>(27 * 5)), found({1, 4, 27, 1});
    EXPECT_TRUE(amnlm::computePcaEigenvectors(found, patches, 4, 100));
    EXPECT_EQ(found.values(), std::vector<float>(4 * 27));
}

TEST(PatchSpaceTest, EachVoxelsPeriodicPatchIsProjected) {
    constexpr int radius = 1, P = 27;
    const std::vector<float> directions = uniformValues(4 * P, -1, 1, 6), weights = amnlm::patchWeights(radius);
    AmnlmData eigenvectors({1, 4, P, 1}, directions);
    for (const auto& [nz, ny, nx] : {std::array{4, 5, 70}, {1, 9, 7}, {1, 1, 2}}) {
        const std::vector<float> values = uniformValues({nz, ny, nx, 1}, 0, 1, 7);
        AmnlmData block({nz, ny, nx, 1}, values), image({nz, ny, nx, 4});
        amnlm::projectPatches(block, eigenvectors, 10, 30, 16, radius, image);
        const std::vector<float> projected = image.values();
        for (int i = 0; i < nz * ny * nx; ++i)
            for (int k = 0; k < 4; ++k) {
                double sum = 0;
                for (int p = 0; p < P; ++p) {
                    const int x = (i % nx + p % 3 - 1 + nx) % nx, y = (i / nx % ny + p / 3 % 3 - 1 + ny) % ny;
                    const int z = (i / nx / ny + p / 9 - 1 + nz) % nz;
                    const auto at = static_cast<std::size_t>((z * ny + y) * nx + x);
                    const auto q = static_cast<std::size_t>(p);
                    sum += static_cast<double>(weights[q]) * (values[at] - 0.3) *
                           directions[static_cast<std::size_t>(k * P) + q];
                }
                ASSERT_NEAR(projected[static_cast<std::size_t>(4 * i + k)], sum, 2e-6) << "voxel " << i;
            }
    }
}

}  // namespace
}  // namespace zel::test
