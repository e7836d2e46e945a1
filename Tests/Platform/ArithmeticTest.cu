#include <lanes.h>

#include <cmath>
#include <limits>
#include <vector>

#include "DeviceFixture.h"

namespace zel::cuda {
namespace {

using ArithmeticTest = host::DeviceTest;

__global__ void arithmeticKernel(const float* x, float* exponentials, float* powers, float* kept, std::uint64_t count,
                                 float base) {
    const FixedBasePower power(base);
    forEachItem(count, [=](std::uint64_t i) {
        exponentials[i] = laneExp(x[i]);
        powers[i] = power(x[i]);
        kept[i] = keepIf(x[i] > 1.0f, x[i]);
    });
}

struct Results {
    std::vector<float> exponentials, powers, kept;
};
Results resultsOf(const std::vector<float>& x, float base) {
    Results results{x, x, x};
    const auto config = host::shape(dim3(static_cast<unsigned int>(x.size()) / 64 + 1));
    EXPECT_EQ(cudaLaunchKernelEx(&config, arithmeticKernel, x.data(), results.exponentials.data(),
                                 results.powers.data(), results.kept.data(), std::uint64_t{x.size()}, base),
              cudaSuccess);
    return results;
}

/// Within a unit in the last place; below the normal numbers, of the smallest.
void expectNear(float value, double expected) {
    EXPECT_NEAR(value, expected, std::max(std::abs(expected) * 0x1p-23, 0x1p-149));
}

TEST_F(ArithmeticTest, ExponentialsAndPowersAreRight) {
    std::vector<float> x{0, 1, -1, 88, -87.5f, -100, 1e-20f};
    for (int i = 0; i < 3000; ++i) x.push_back(static_cast<float>(i - 1500) * 0.057f);
    for (const float base : {0.9f, 0.7021884f, 1e-3f, 1.0f, 1.5f}) {
        const Results results = resultsOf(x, base);
        for (std::size_t i = 0; i < x.size(); ++i) {
            SCOPED_TRACE(::testing::Message() << base << ", " << x[i]);
            expectNear(results.exponentials[i], std::exp(static_cast<double>(x[i])));
            if (const double power = std::pow(static_cast<double>(base), x[i]); power < 1e38)
                expectNear(results.powers[i], power);
            EXPECT_EQ(results.kept[i], x[i] > 1 ? x[i] : 0.0f);
        }
    }
}

TEST_F(ArithmeticTest, ExtremesAreThoseOfTheCLibrary) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> x{infinity, -infinity, 1e30f, -1e30f, std::nanf("")};
    const Results results = resultsOf(x, 0.0f);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(results.exponentials[i], std::exp(x[i])) << x[i];
        EXPECT_EQ(results.powers[i], std::pow(0.0f, x[i])) << x[i];
    }
    EXPECT_TRUE(std::isnan(results.exponentials[4]) && std::isnan(results.powers[4]));
    EXPECT_EQ(results.kept, (std::vector<float>{infinity, 0, 1e30f, 0, 0}));
}

// What a lane gets does not depend on how many there are beside it.
TEST_F(ArithmeticTest, EachLaneHasTheSameBits) {
    std::vector<float> x;
    for (int i = 0; i < 200; ++i) x.push_back(1.0f + static_cast<float>(i) * 0.123f);
    const Results together = resultsOf(x, 0.7f);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const Results alone = resultsOf({x[i]}, 0.7f);
        EXPECT_EQ(together.exponentials[i], alone.exponentials[0]);
        EXPECT_EQ(together.powers[i], alone.powers[0]);
    }
}

}  // namespace
}  // namespace zel::cuda
