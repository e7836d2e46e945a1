#include <thread>

#include "DeviceFixture.h"

namespace zel::host {
namespace {

using FaultTest = DeviceTest;

TEST_F(FaultTest, ErrorsStayPendingPerThreadUntilTaken) {
    cudaDeviceProp properties{};
    EXPECT_THAT(Statuses({cudaSetDevice(99), cudaGetDeviceProperties(&properties, -1)}), Each(cudaErrorInvalidDevice));
    std::thread([] { EXPECT_EQ(cudaGetLastError(), cudaSuccess); }).join();
    int count = 0;
    EXPECT_EQ(cudaGetDeviceCount(&count), cudaSuccess);  // a success takes nothing back
    EXPECT_THAT(Statuses({cudaPeekAtLastError(), cudaGetLastError()}), Each(cudaErrorInvalidDevice));
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_STREQ(cudaGetErrorString(cudaErrorInvalidDevice), "invalid device ordinal");
    EXPECT_STREQ(cudaGetErrorString(static_cast<cudaError_t>(12345)), "unrecognized error code");
}

TEST_F(FaultTest, WithoutDevicesOnlyTheCountSucceeds) {
    const ScopedDevices devices(0, 0);
    int number = -1;
    void* memory = nullptr;
    EXPECT_EQ(cudaGetDeviceCount(&number), cudaSuccess);
    EXPECT_EQ(number, 0);
    EXPECT_THAT(Statuses({cudaGetDevice(&number), cudaSetDevice(0), cudaDeviceSynchronize(), cudaMalloc(&memory, 1),
                          cudaGetLastError()}),
                Each(cudaErrorNoDevice));
}

TEST_F(FaultTest, RefusesTheNthCallOnce) {
    resetCallCounts();
    injectFault({.call = "cudaMalloc", .nth = 2});
    void *first = nullptr, *second = nullptr;
    EXPECT_THAT(Statuses({cudaMalloc(&first, 8), cudaDeviceSynchronize()}), Each(cudaSuccess));
    EXPECT_FALSE(faultFired());
    EXPECT_EQ(cudaMalloc(&second, 8), cudaErrorMemoryAllocation);
    EXPECT_TRUE(faultFired());
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(cudaMalloc(&second, 8), cudaSuccess);
    EXPECT_EQ(callCount("cudaMalloc"), 3u) << "the refused one too";
    EXPECT_EQ(callCount(), 4u);
    EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);

    injectFault({.call = "", .status = cudaErrorNotReady});
    EXPECT_EQ(cudaFree(first), cudaErrorNotReady);  // gone all the same
    EXPECT_EQ(deviceUse().liveAllocations, 1u);
    EXPECT_EQ(cudaFree(second), cudaSuccess);
}

TEST_F(FaultTest, FailureSticksUntilReset) {
    const ScopedDevices devices(2, 1 << 20);
    void* memory = nullptr;
    ASSERT_EQ(cudaMalloc(&memory, 8), cudaSuccess);
    injectFault({.call = "cudaDeviceSynchronize", .kind = FaultKind::failed, .status = cudaErrorIllegalAddress});
    EXPECT_THAT(
        Statuses({cudaDeviceSynchronize(), cudaGetLastError(), cudaGetLastError(), cudaSetDevice(1), cudaSetDevice(0)}),
        Each(cudaErrorIllegalAddress));
    std::thread([] { EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress); }).join();
    EXPECT_THAT(Statuses({cudaDeviceReset(), cudaGetLastError()}), Each(cudaSuccess));
    EXPECT_EQ(deviceUse().liveAllocations, 0u);

    injectFault({.call = "", .kind = FaultKind::failed});
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorLaunchFailure);
    clearFault();
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
}

TEST_F(FaultTest, PropertiesAreThoseOfTheShownDevice) {
    const ScopedDevices devices(2, 123456);
    cudaDeviceProp properties{};
    int major = 0, minor = -1;
    EXPECT_THAT(Statuses({cudaGetDeviceProperties(&properties, 1),
                          cudaDeviceGetAttribute(&major, static_cast<cudaDeviceAttr>(75), 0),
                          cudaDeviceGetAttribute(&minor, static_cast<cudaDeviceAttr>(76), 0)}),
                Each(cudaSuccess));
    EXPECT_EQ(properties.totalGlobalMem, 123456u);
    EXPECT_EQ(std::pair(major, minor), std::pair(properties.major, properties.minor));
    EXPECT_EQ(cudaDeviceGetAttribute(&major, cudaDevAttrComputeCapabilityMajor, 2), cudaErrorInvalidDevice);
}

}  // namespace
}  // namespace zel::host
