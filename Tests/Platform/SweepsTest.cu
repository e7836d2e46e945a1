#include <lanes.h>

#include <array>
#include <cstdint>
#include <vector>

#include "DeviceFixture.h"

namespace zel::cuda {
namespace {

using SweepsTest = host::DeviceTest;

/// Along each line, for each channel: the sum of the values so far, each times its voxel's factor.
template <int axis>
__global__ void runningSumKernel(float* data, const float* factors, SweepAxis<axis> along) {
    forEachSweepLine(along, [=](const auto lines) {
        auto sum = lines.fill(0.0f);
        auto factor = lines.fillLines(0.0f);
        for (int p = 0; p < along.length(); ++p) {
            lines.eachLine([&](unsigned int line) { factor[line] = factors[lines.voxelAt(p, line)]; });
            lines.each([&](unsigned int i) {
                sum[i] += factor[lines.lineOf(i)] * data[lines.at(p, i)];
                data[lines.at(p, i)] = sum[i];
            });
        }
    });
}

template <int axis>
void expectRunningSums(int nz, int ny, int nx, int channels) {
    SCOPED_TRACE(::testing::Message() << "axis " << axis << ", " << nx << " x " << ny << " x " << nz << " x "
                                      << channels);
    const std::array<int, 3> extents{nx, ny, nz};
    const std::array<std::size_t, 3> steps{1, static_cast<std::size_t>(nx), static_cast<std::size_t>(nx * ny)};
    std::vector<float> factors, data;
    for (int v = 0; v < nx * ny * nz; ++v) factors.push_back(static_cast<float>(v % 7 - 3));
    for (int i = 0; i < nx * ny * nz * channels + 1; ++i) data.push_back(static_cast<float>(i % 11 - 4));
    std::vector<float> expected = data;
    for (std::size_t v = 0; v < factors.size(); ++v)
        for (std::size_t k = 0; k < static_cast<std::size_t>(channels); ++k) {
            const bool isFirst = v / steps[axis] % static_cast<std::size_t>(extents[axis]) == 0;
            const std::size_t i = v * channels + k;
            expected[i] = factors[v] * expected[i] + (isFirst ? 0 : expected[i - steps[axis] * channels]);
        }
    const SweepAxis<axis> along{nz, ny, nx, channels};
    const auto blocks = [](int threads) { return static_cast<unsigned int>((threads + 7) / 8); };
    const auto config = host::shape(dim3(blocks(along.lines()), blocks(along.layers())), dim3(8, 8));
    ASSERT_EQ(cudaLaunchKernelEx(&config, runningSumKernel<axis>, data.data(), factors.data(), along), cudaSuccess);
    EXPECT_EQ(data, expected);
}

// Extents around the sizes of bundles, channel counts with and without a form of their own.
TEST_F(SweepsTest, EachLineIsWalkedAlongOnceByItsChannels) {
    for (const auto [nz, ny, nx] : {std::array{1, 1, 1}, {1, 3, 5}, {2, 17, 16}, {5, 70, 33}, {9, 20, 85}})
        for (const int channels : {1, 2, 3, 4, 5}) {
            expectRunningSums<0>(nz, ny, nx, channels);
            expectRunningSums<1>(nz, ny, nx, channels);
            expectRunningSums<2>(nz, ny, nx, channels);
        }
}

}  // namespace
}  // namespace zel::cuda
