#include "Kernels/FillKernel.h"

#include "DeviceVectors.h"

namespace {

using Bytes = std::vector<unsigned char>;

/// The mask and one byte behind it, which started as 9.
Bytes diamond(int radius, std::size_t bytes) {
    const auto device = zel::test::toDevice(Bytes(bytes + 1, 9));
    zel::cuda::fillKernelV4(device.get(), radius, nullptr);
    return zel::test::toHost(device, bytes + 1);
}

}  // namespace

TEST(FillKernelV4Test, WritesTheDiamondAndNoByteMore) {
    EXPECT_EQ(diamond(0, 1), (Bytes{1, 9}));
    EXPECT_EQ(diamond(1, 9), (Bytes{0, 1, 0, 1, 1, 1, 0, 1, 0, 9}));
    EXPECT_EQ(diamond(2, 25), (Bytes{0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0, 9}));
    EXPECT_EQ(diamond(-1, 3), (Bytes{9, 9, 9, 9}));
}
