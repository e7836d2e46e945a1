#include <lanes.h>

#include <array>
#include <cstdint>
#include <vector>

#include "DeviceFixture.h"

namespace zel::cuda {
namespace {

using VoxelsAndItemsTest = host::DeviceTest;

/// What each voxel and item is to hold when it was met once.
constexpr int place(int x, int y, int z) {
    return 1 + x + 100 * y + 10000 * z;
}

template <class Index>
__global__ void voxelsKernel(int* out, Index nx, Index ny, Index nz) {
    forEachVoxel(nx, ny, nz, [=](Index x, Index y, Index z) {
        out[x + nx * (y + ny * z)] += place(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z));
    });
}

template <class Index>
void expectEachVoxelOnce(dim3 block) {
    for (const dim3 extents : {dim3(1, 1, 1), dim3(70, 1, 1), dim3(1, 9, 70), dim3(33, 17, 9)}) {
        SCOPED_TRACE(::testing::Message() << extents.x << " x " << extents.y << " x " << extents.z);
        std::vector<int> out(std::size_t{extents.x} * extents.y * extents.z + 1), expected;
        const auto config = host::shape(
            dim3((extents.x - 1) / block.x + 1, (extents.y - 1) / block.y + 1, (extents.z - 1) / block.z + 1), block);
        ASSERT_EQ(cudaLaunchKernelEx(&config, voxelsKernel<Index>, out.data(), extents.x, extents.y, extents.z),
                  cudaSuccess);
        for (unsigned int z = 0; z < extents.z; ++z)
            for (unsigned int y = 0; y < extents.y; ++y)
                for (unsigned int x = 0; x < extents.x; ++x)
                    expected.push_back(place(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z)));
        expected.push_back(0);
        EXPECT_EQ(out, expected);
    }
}

// Blocks that reach over the ends of each axis, and one that holds all: it may be run in parts.
TEST_F(VoxelsAndItemsTest, EachVoxelIsMetOnce) {
    for (int launch = 0; launch < 3; ++launch) {
        expectEachVoxelOnce<int>(dim3(8, 8, 8));
        expectEachVoxelOnce<std::uint64_t>(dim3(70, 2, 7));
    }
}

/// Items count themselves, and what their bundle says of its row.
__global__ void itemBundlesKernel(int* visits, int* rowEnds, std::uint64_t count, std::uint64_t offset,
                                  std::uint64_t rowLength) {
    forEachItemBundle(count, offset, rowLength, [=](const auto bundle) {
        const std::uint64_t row = bundle.first / rowLength;
        bundle.each([&](unsigned int lane) {
            visits[bundle.first + lane] += 1;
            rowEnds[bundle.first + lane] += (bundle.first + lane) / rowLength == row ? 1 : 0;
        });
    });
}

__global__ void itemsKernel(int* visits, std::uint64_t count) {
    forEachItem(count, [=](std::uint64_t item) { visits[item] += 1; });
}

// Launches that go over the items piece by piece, the last one beyond their end.
TEST_F(VoxelsAndItemsTest, LaunchesTogetherMeetEachItemOnceInItsRow) {
    for (const unsigned int blocks : {1u, 3u})
        for (const unsigned int block : {8u, 200u, 512u})
            for (const std::uint64_t rowLength : {1, 10, 100, 5000}) {
                SCOPED_TRACE(::testing::Message() << blocks << " x " << block << ", rows of " << rowLength);
                constexpr std::uint64_t count = 3001;
                const auto config = host::shape(dim3(blocks), dim3(block));
                std::vector<int> visits(count + 1), rowEnds = visits, once(count + 1, 1);
                once[count] = 0;
                for (std::uint64_t offset = 0; offset < count; offset += std::uint64_t{blocks} * block)
                    ASSERT_EQ(cudaLaunchKernelEx(&config, itemBundlesKernel, visits.data(), rowEnds.data(), count,
                                                 offset, rowLength),
                              cudaSuccess);
                EXPECT_EQ(visits, once);
                EXPECT_EQ(rowEnds, once);
            }
    for (const std::uint64_t count : {1, 7, 8, 9, 3001}) {
        const auto config = host::shape(dim3(static_cast<unsigned int>(count / 8 + 1)), dim3(8));
        std::vector<int> visits(count + 1), once(count + 1, 1);
        once[count] = 0;
        ASSERT_EQ(cudaLaunchKernelEx(&config, itemsKernel, visits.data(), count), cudaSuccess);
        EXPECT_EQ(visits, once);
    }
}

}  // namespace
}  // namespace zel::cuda
