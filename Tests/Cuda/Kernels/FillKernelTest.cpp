#include "Kernels/FillKernel.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "DeviceVectors.h"

using namespace zel::cuda;

namespace {

/// The mask and one byte behind it, which started as 9.
std::vector<unsigned char> diamond(int radius, std::size_t bytes) {
    const auto device = zel::test::toDevice(std::vector<unsigned char>(bytes + 1, 9));
    fillKernelV4(static_cast<unsigned char*>(device.get()), radius, nullptr);
    return zel::test::toHost<unsigned char>(device, bytes + 1);
}

using Bytes = std::vector<unsigned char>;

}  // namespace

TEST(FillKernelV4Test, WritesTheDiamondAndNoByteMore) {
    EXPECT_EQ(diamond(0, 1), (Bytes{1, 9}));
    EXPECT_EQ(diamond(1, 9), (Bytes{0, 1, 0, 1, 1, 1, 0, 1, 0, 9}));
    EXPECT_EQ(diamond(2, 25), (Bytes{0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0, 9}));
    EXPECT_EQ(diamond(-1, 3), (Bytes{9, 9, 9, 9}));
    const int r = 40, side = 2 * r + 1;
    const Bytes mask = diamond(r, side * side);
    for (int i = 0; i < side * side; ++i) {
        ASSERT_EQ(mask[i], std::abs(i % side - r) + std::abs(i / side - r) <= r ? 1 : 0) << i;
    }
}
