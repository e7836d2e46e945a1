#include <cstring>
#include <numeric>
#include <vector>

#include "DeviceFixture.h"

namespace zel::host {
namespace {

using CopyTest = DeviceTest;
using Bytes = std::vector<unsigned char>;

Bytes counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i * 131 + i / 256);
    return bytes;
}

// Sizes around the pieces that large copies are cut into, in one row and in many, with and without padding.
TEST_F(CopyTest, PitchedRowsArriveAndPaddingStays) {
    struct Case {
        std::size_t width, height, hostPadding, devicePadding;
    };
    for (const auto& [width, height, hostPadding, devicePadding] :
         {Case{1, 1, 0, 0}, Case{100, 7, 3, 5}, Case{100, 7, 0, 0}, Case{(1 << 20) + 1, 3, 1, 0},
          Case{3 << 20, 1, 0, 0}, Case{4099, 300, 0, 13}, Case{1, 600000, 1, 0}}) {
        SCOPED_TRACE(::testing::Message() << width << " x " << height << " + " << hostPadding << ", " << devicePadding);
        const std::size_t hostPitch = width + hostPadding, devicePitch = width + devicePadding;
        const std::size_t deviceBytes = (height - 1) * devicePitch + width;
        const Bytes source = counting(height * hostPitch);
        Bytes back(height * hostPitch, 9);
        const DeviceArray<unsigned char> device(deviceBytes);
        ASSERT_EQ(cudaMemsetAsync(device.get(), 5, deviceBytes), cudaSuccess);
        ASSERT_EQ(cudaMemcpy2DAsync(device.get(), devicePitch, source.data(), hostPitch, width, height,
                                    cudaMemcpyHostToDevice),
                  cudaSuccess);
        Bytes raw(deviceBytes);
        ASSERT_EQ(cudaMemcpy(raw.data(), device.get(), deviceBytes, cudaMemcpyDeviceToHost), cudaSuccess);
        ASSERT_EQ(
            cudaMemcpy2DAsync(back.data(), hostPitch, device.get(), devicePitch, width, height, cudaMemcpyDeviceToHost),
            cudaSuccess);
        ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
        Bytes expectedRaw(deviceBytes, 5), expectedBack(back.size(), 9);
        for (std::size_t y = 0; y < height; ++y) {
            std::memcpy(&expectedRaw[y * devicePitch], &source[y * hostPitch], width);
            std::memcpy(&expectedBack[y * hostPitch], &source[y * hostPitch], width);
        }
        EXPECT_TRUE(raw == expectedRaw);
        EXPECT_TRUE(back == expectedBack);
    }
}

TEST_F(CopyTest, VolumesAreCutOutAtTheirPositions) {
    cudaPitchedPtr volume{};
    ASSERT_EQ(cudaMalloc3D(&volume, make_cudaExtent(10, 4, 3)), cudaSuccess);
    ASSERT_EQ(cudaMemsetAsync(volume.ptr, 0, volume.pitch * 4 * 3), cudaSuccess);
    Bytes source = counting(120);
    Bytes back(120, 1);

    cudaMemcpy3DParms up{};
    up.srcPtr = make_cudaPitchedPtr(source.data(), 6, 6, 5);
    up.srcPos = make_cudaPos(1, 2, 1);
    up.dstPtr = volume;
    up.dstPos = make_cudaPos(7, 1, 0);
    up.extent = make_cudaExtent(3, 3, 2);
    up.kind = cudaMemcpyHostToDevice;
    ASSERT_EQ(cudaMemcpy3DAsync(&up), cudaSuccess);

    cudaMemcpy3DParms down{};
    down.srcPtr = volume;
    down.dstPtr = make_cudaPitchedPtr(back.data(), 10, 10, 4);
    down.extent = make_cudaExtent(10, 4, 3);
    down.kind = cudaMemcpyDeviceToHost;
    ASSERT_EQ(cudaMemcpy3DAsync(&down), cudaSuccess);
    ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    for (std::size_t z = 0; z < 3; ++z)
        for (std::size_t y = 0; y < 4; ++y)
            for (std::size_t x = 0; x < 10; ++x) {
                const bool inside = x >= 7 && y >= 1 && z < 2;
                const std::size_t from = ((z + 1) * 5 + (y - 1 + 2)) * 6 + (x - 7 + 1);
                EXPECT_EQ(back[(z * 4 + y) * 10 + x], inside ? source[from] : 0) << x << ", " << y << ", " << z;
            }

    down.extent.height = 5;
    EXPECT_EQ(cudaMemcpy3DAsync(&down), cudaErrorInvalidValue);
    up.dstPos.z = 2;
    EXPECT_EQ(cudaMemcpy3DAsync(&up), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy3DAsync(nullptr), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(volume.ptr), cudaSuccess);
}

TEST_F(CopyTest, BoundsEndWithTheLastRowsWidth) {
    const DeviceArray<char> device(2 * 100 + 60);
    std::vector<char> host(1000);
    const auto copy = [&](std::size_t offset, std::size_t pitch, std::size_t width, std::size_t height) {
        return cudaMemcpy2DAsync(device.get() + offset, pitch, host.data(), 200, width, height, cudaMemcpyHostToDevice);
    };
    EXPECT_EQ(copy(0, 100, 60, 3), cudaSuccess);
    EXPECT_EQ(copy(0, 100, 61, 3), cudaErrorInvalidValue);
    EXPECT_EQ(copy(1, 100, 60, 3), cudaErrorInvalidValue);
    EXPECT_EQ(copy(0, 100, 60, 4), cudaErrorInvalidValue);
    EXPECT_EQ(copy(0, 59, 60, 2), cudaErrorInvalidValue);
    EXPECT_EQ(copy(0, std::size_t{1} << 63, 60, 3), cudaErrorInvalidValue);
    EXPECT_EQ(copy(0, 100, 0, 4), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(device.get(), host.data(), 261, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(device.get(), host.data(), 260, cudaMemcpyHostToDevice), cudaSuccess);
}

TEST_F(CopyTest, DirectionsAreChecked) {
    const DeviceArray<char> device(16);
    char host[16]{};
    EXPECT_EQ(cudaMemcpy(host, device.get(), 16, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(device.get(), host, 16, cudaMemcpyDeviceToHost), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(device.get(), host, 16, cudaMemcpyDeviceToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(device.get(), host, 16, cudaMemcpyHostToHost), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(device.get(), host, 16, static_cast<cudaMemcpyKind>(5)), cudaErrorInvalidMemcpyDirection);
    EXPECT_EQ(cudaMemcpy(nullptr, host, 16, cudaMemcpyDefault), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy(device.get(), host, 16, cudaMemcpyDefault), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(device.get(), host, 17, cudaMemcpyDefault), cudaErrorInvalidValue);
}

}  // namespace
}  // namespace zel::host
