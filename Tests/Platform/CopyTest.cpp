#include <cstring>

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
    using Case = std::array<std::size_t, 4>;
    for (const auto& [width, height, hostPadding, devicePadding] :
         {Case{1, 1, 0, 0}, Case{100, 7, 3, 5}, Case{100, 7, 0, 0}, Case{(1 << 20) + 1, 3, 1, 0},
          Case{3 << 20, 1, 0, 0}, Case{4099, 300, 0, 13}, Case{1, 600000, 1, 0}}) {
        SCOPED_TRACE(::testing::Message() << width << " x " << height << " + " << hostPadding << ", " << devicePadding);
        const std::size_t hostPitch = width + hostPadding, devicePitch = width + devicePadding;
        const Bytes source = counting(height * hostPitch);
        Bytes raw((height - 1) * devicePitch + width), back(source.size(), 9);
        Bytes expectedRaw(raw.size(), 5), expectedBack = back;
        const DeviceArray<unsigned char> device(raw.size(), 5);
        EXPECT_THAT(Statuses({cudaMemcpy2DAsync(device.get(), devicePitch, source.data(), hostPitch, width, height,
                                                cudaMemcpyHostToDevice),
                              cudaMemcpy(raw.data(), device.get(), raw.size(), cudaMemcpyDeviceToHost),
                              cudaMemcpy2DAsync(back.data(), hostPitch, device.get(), devicePitch, width, height,
                                                cudaMemcpyDeviceToHost),
                              cudaDeviceSynchronize()}),
                    Each(cudaSuccess));
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
    Bytes source = counting(120), back(120, 1);
    cudaMemcpy3DParms up{}, down{};
    up.srcPtr = make_cudaPitchedPtr(source.data(), 6, 6, 5);
    up.srcPos = make_cudaPos(1, 2, 1);
    up.dstPtr = down.srcPtr = volume;
    up.dstPos = make_cudaPos(7, 1, 0);
    up.extent = make_cudaExtent(3, 3, 2);
    up.kind = cudaMemcpyHostToDevice;
    down.dstPtr = make_cudaPitchedPtr(back.data(), 10, 10, 4);
    down.extent = make_cudaExtent(10, 4, 3);
    down.kind = cudaMemcpyDeviceToHost;
    EXPECT_THAT(Statuses({cudaMemsetAsync(volume.ptr, 0, volume.pitch * 4 * 3), cudaMemcpy3DAsync(&up),
                          cudaMemcpy3DAsync(&down), cudaDeviceSynchronize()}),
                Each(cudaSuccess));
    for (std::size_t i = 0; i < back.size(); ++i) {
        const std::size_t x = i % 10, y = i / 10 % 4, z = i / 40;
        const bool inside = x >= 7 && y >= 1 && z < 2;
        EXPECT_EQ(back[i], inside ? source[((z + 1) * 5 + y + 1) * 6 + x - 6] : 0) << i;
    }
    down.extent.height = 5;
    up.dstPos.z = 2;
    EXPECT_THAT(Statuses({cudaMemcpy3DAsync(&down), cudaMemcpy3DAsync(&up), cudaMemcpy3DAsync(nullptr)}),
                Each(cudaErrorInvalidValue));
    EXPECT_EQ(cudaFree(volume.ptr), cudaSuccess);
}

TEST_F(CopyTest, BoundsEndWithTheLastRowsWidth) {
    const DeviceArray<char> device(2 * 100 + 60);
    std::vector<char> host(1000);
    const auto copy = [&](std::size_t offset, std::size_t pitch, std::size_t width, std::size_t height) {
        return cudaMemcpy2DAsync(device.get() + offset, pitch, host.data(), 200, width, height, cudaMemcpyHostToDevice);
    };
    EXPECT_THAT(Statuses({copy(0, 100, 60, 3), copy(0, 100, 0, 4)}), Each(cudaSuccess));
    EXPECT_THAT(Statuses({copy(0, 100, 61, 3), copy(1, 100, 60, 3), copy(0, 100, 60, 4), copy(0, 59, 60, 2),
                          copy(0, std::size_t{1} << 63, 60, 3)}),
                Each(cudaErrorInvalidValue));
}

TEST_F(CopyTest, DirectionsAreChecked) {
    const DeviceArray<char> device(16);
    char host[16]{};
    const auto copy = [](void* dst, const void* src, int kind, std::size_t bytes = 16) {
        return cudaMemcpy(dst, src, bytes, static_cast<cudaMemcpyKind>(kind));
    };
    {
        const ScopedTestModes separate({.separateMemory = true});
        EXPECT_THAT(Statuses({copy(device.get(), host, cudaMemcpyDeviceToHost),
                              copy(host, device.get(), cudaMemcpyDeviceToDevice),
                              copy(device.get(), host, cudaMemcpyDeviceToDevice)}),
                    Each(cudaErrorInvalidValue));
    }
    EXPECT_THAT(
        Statuses({copy(host, device.get(), cudaMemcpyHostToDevice), copy(device.get(), host, cudaMemcpyHostToHost),
                  copy(nullptr, host, cudaMemcpyDefault), copy(device.get(), host, cudaMemcpyDefault, 17)}),
        Each(cudaErrorInvalidValue));
    EXPECT_EQ(copy(device.get(), host, 5), cudaErrorInvalidMemcpyDirection);
    EXPECT_EQ(copy(device.get(), host, cudaMemcpyDefault), cudaSuccess);
}

}  // namespace
}  // namespace zel::host
