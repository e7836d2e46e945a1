#include <lanes.h>

#include <cstdint>
#include <numeric>

#include "DeviceFixture.h"

namespace zel::cuda {
namespace {

using LanesTest = host::DeviceTest;

/// A running sum of three, written by way of bundles; visits tell how often an item was met.
__global__ void tapsKernel(const int* src, int* dst, int* visits, std::uint64_t count) {
    forEachBundle(count, [=](const auto bundle) {
        auto sum = bundle.fill(100);
        for (int tap = 0; tap < 3; ++tap)
            bundle.each([&](unsigned int lane) { sum[lane] += src[bundle.first + lane + tap]; });
        bundle.each([&](unsigned int lane) {
            dst[bundle.first + lane] = sum[lane];
            visits[bundle.first + lane] += 1;
        });
    });
}

/// Counts the visits to each line, by way of single lines and of bundles. A line's bundle may be another block's than
/// the line itself, hence two counters.
__global__ void linesKernel(int* visits, int* bundleVisits, std::uint64_t outer, std::uint64_t count) {
    forEachLine(outer, count,
                [=](std::uint64_t o, std::uint64_t l) { onFirstLane([=] { visits[o * count + l] += 1; }); });
    forEachLineBundle(outer, count, [=](std::uint64_t o, const auto bundle) {
        forEachPosition(1, [=](std::uint64_t) {
            bundle.each([&](unsigned int lane) { bundleVisits[o * count + bundle.first + lane] += 1; });
        });
    });
}

const cudaLaunchConfig_t oneBlock = host::shape(dim3(1));

// Counts around the bundles' sizes: each item belongs to one bundle, and nothing behind the end is touched.
TEST_F(LanesTest, BundlesCoverEachItemOnce) {
    for (const std::uint64_t count : {0, 1, 15, 16, 17, 63, 64, 65, 80, 95, 200}) {
        SCOPED_TRACE(count);
        std::vector<int> src(count + 2), dst(count + 1, -1), visits(count + 1), expected = dst, once(count + 1, 1);
        std::iota(src.begin(), src.end(), 0);
        ASSERT_EQ(cudaLaunchKernelEx(&oneBlock, tapsKernel, src.data(), dst.data(), visits.data(), count), cudaSuccess);
        for (std::uint64_t i = 0; i < count; ++i) expected[i] = 100 + 3 * static_cast<int>(i) + 3;
        once[count] = 0;
        EXPECT_EQ(dst, expected);
        EXPECT_EQ(visits, once);
    }
}

// More and fewer blocks than lines or bundles; each line is one block's.
TEST_F(LanesTest, BlocksTogetherWalkOverAllLines) {
    for (const std::uint64_t count : {1, 64, 100, 150})
        for (const dim3 grid : {dim3(1), dim3(3), dim3(500), dim3(2, 3), dim3(3, 2, 5)}) {
            SCOPED_TRACE(::testing::Message() << count << " lines, " << grid.x << " x " << grid.y << " x " << grid.z);
            const auto config = host::shape(grid);
            std::vector<int> visits(7 * count), bundleVisits(7 * count);
            ASSERT_EQ(
                cudaLaunchKernelEx(&config, linesKernel, visits.data(), bundleVisits.data(), std::uint64_t{7}, count),
                cudaSuccess);
            EXPECT_EQ(visits, std::vector<int>(7 * count, 1));
            EXPECT_EQ(bundleVisits, visits);
        }
}

}  // namespace
}  // namespace zel::cuda
