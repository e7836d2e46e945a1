#include <lanes.h>

#include <cstdint>
#include <vector>

#include "DeviceFixture.h"

namespace zel::cuda {
namespace {

using PatchesTest = host::DeviceTest;

/// Adds to channel k of each item the values up to `reach` beside it in its row, times k + 1.
template <int channels>
__global__ void neighbourSumKernel(float* sums, const float* values, int rows, int length, int reach) {
    const auto count = static_cast<std::uint64_t>(rows) * length;
    forEachItemBundle(count, 0, length, [=](const auto bundle) {
        const int x = static_cast<int>(bundle.first % length);
        ChannelSums<decltype(bundle), channels> sum(bundle, sums);
        const PeriodicRow row(bundle, values + bundle.first - x, x, length, reach);
        for (int dx = -reach; dx <= reach; ++dx)
            bundle.each([&](unsigned int lane) {
                for (int k = 0; k < channels; ++k) sum(k, lane) += row(lane, dx) * static_cast<float>(k + 1);
            });
    });
}

template <int channels>
void expectNeighbourSums(int length, int reach) {
    SCOPED_TRACE(::testing::Message() << channels << " channels, rows of " << length << ", reach " << reach);
    constexpr int rows = 3;
    std::vector<float> values, sums, expected;
    for (int i = 0; i < rows * length; ++i) values.push_back(static_cast<float>(i * i % 13));
    for (int i = 0; i < rows * length * channels + 1; ++i) sums.push_back(static_cast<float>(i));
    expected = sums;
    for (int i = 0; i < rows * length; ++i)
        for (int dx = -reach; dx <= reach; ++dx) {
            const int row = i / length, x = (i % length + dx + reach * length) % length;
            for (int k = 0; k < channels; ++k)
                expected[i * channels + k] += values[row * length + x] * static_cast<float>(k + 1);
        }
    const auto config = host::shape(dim3(static_cast<unsigned int>(rows * length + 63) / 64));
    ASSERT_EQ(
        cudaLaunchKernelEx(&config, neighbourSumKernel<channels>, sums.data(), values.data(), rows, length, reach),
        cudaSuccess);
    EXPECT_EQ(sums, expected);
}

// Rows shorter than the reach are gone around several times.
TEST_F(PatchesTest, RowsGoOnFromTheirOtherEnd) {
    for (const int length : {1, 2, 15, 80, 200})
        for (const int reach : {0, 2, maxPeriodicReach}) {
            expectNeighbourSums<1>(length, reach);
            expectNeighbourSums<4>(length, reach);
        }
}

}  // namespace
}  // namespace zel::cuda
