// The host's memory as memory of the device.

#include <nppi_filtering_functions.h>

#include <numeric>

#include "DeviceFixture.h"
#include "ProcessMemory.h"

namespace zel::host {
namespace {

using HostMemoryTest = DeviceTest;

/// Rows of 7 pixels without padding, as files have them.
struct Picture {
    static constexpr NppiSize size{7, 5};

    Picture() { std::iota(pixels.begin(), pixels.end(), 1); }
    int box(Npp16u* target) const {
        return nppiFilterBoxBorder_16u_C1R_Ctx(pixels.data(), 14, size, {0, 0}, target, 14, size, {3, 3}, {1, 1},
                                               NPP_BORDER_REPLICATE, {});
    }
    std::vector<Npp16u> pixels = std::vector<Npp16u>(35);
};

int pageableAccess() {
    int answer = -1;
    EXPECT_EQ(cudaDeviceGetAttribute(&answer, cudaDevAttrPageableMemoryAccess, 0), cudaSuccess);
    return answer;
}

TEST_F(HostMemoryTest, IsUsedInPlaceUnlessMemoriesAreSeparate) {
    const Picture picture;
    std::vector<Npp16u> result(35, 9), copy(35, 9);
    const auto statuses = [&] {
        return Statuses({picture.box(result.data()) == 0 ? cudaSuccess : cudaErrorInvalidValue,
                         cudaMemcpy(copy.data(), result.data(), 70, cudaMemcpyDeviceToDevice),
                         cudaMemsetAsync(result.data() + 1, 0, 68), cudaDeviceSynchronize()});
    };
    {
        const ScopedTestModes separate({.separateMemory = true});
        EXPECT_EQ(pageableAccess(), 0);
        EXPECT_EQ(statuses(),
                  (Statuses{cudaErrorInvalidValue, cudaErrorInvalidValue, cudaErrorInvalidValue, cudaSuccess}));
        cudaGetLastError();
    }
    EXPECT_THAT(result, Each(9)) << "refused calls write nothing";
    EXPECT_EQ(pageableAccess(), 1);
    EXPECT_THAT(statuses(), Each(cudaSuccess));
    EXPECT_EQ(copy[0], (4 * 1 + 2 * 2 + 2 * 8 + 9) / 9);
    EXPECT_EQ(copy[8], 9) << "the mean of a plane is its middle";
    EXPECT_EQ(result[0], copy[0]);
    EXPECT_EQ(result[1], 0);
}

TEST_F(HostMemoryTest, IsNotWhatWasTheDevices) {
    const Picture picture;
    const auto isRefused = [&](void* target) {
        cudaGetLastError();
        const Statuses statuses{cudaMemsetAsync(target, 0, 70),
                                cudaMemcpy(target, picture.pixels.data(), 70, cudaMemcpyHostToDevice)};
        return statuses == Statuses(2, cudaErrorInvalidValue) && picture.box(static_cast<Npp16u*>(target)) != 0;
    };
    EXPECT_TRUE(isRefused(nullptr));
    EXPECT_TRUE(isRefused(reinterpret_cast<void*>(0x7000))) << "nothing is there";
    void* address = nullptr;
    ASSERT_EQ(cudaMalloc(&address, 69), cudaSuccess);
    EXPECT_TRUE(isRefused(address)) << "a byte too long";
    EXPECT_TRUE(isRefused(static_cast<std::byte*>(address) - 2)) << "begins before it";
    ASSERT_EQ(cudaFree(address), cudaSuccess);
    ASSERT_EQ(cudaMalloc(&address, 4 << 20), cudaSuccess);
    EXPECT_FALSE(isRefused(address));
    ASSERT_EQ(cudaFree(address), cudaSuccess);
    if (!test::ProcessMemory().isSanitized()) {
        EXPECT_TRUE(isRefused(address)) << "waits for its next use";
    }
    ASSERT_EQ(cudaMalloc(&address, 4 << 20), cudaSuccess);
    ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    EXPECT_TRUE(isRefused(address)) << "ended by a reset";
}

}  // namespace
}  // namespace zel::host
