#include <thread>

#include "DeviceFixture.h"

namespace zel::host {
namespace {

using FaultTest = DeviceTest;

TEST_F(FaultTest, ErrorsStayPendingPerThreadUntilTaken) {
    EXPECT_EQ(cudaSetDevice(99), cudaErrorInvalidDevice);
    cudaDeviceProp properties{};
    EXPECT_EQ(cudaGetDeviceProperties(&properties, -1), cudaErrorInvalidDevice);
    std::thread([] { EXPECT_EQ(cudaGetLastError(), cudaSuccess); }).join();
    int count = 0;
    EXPECT_EQ(cudaGetDeviceCount(&count), cudaSuccess);  // a success takes nothing back
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_STREQ(cudaGetErrorString(cudaErrorInvalidDevice), "invalid device ordinal");
    EXPECT_STREQ(cudaGetErrorString(static_cast<cudaError_t>(12345)), "unrecognized error code");
}

TEST_F(FaultTest, WithoutDevicesOnlyTheCountSucceeds) {
    const ScopedDevices devices(0, 0);
    int number = -1;
    EXPECT_EQ(cudaGetDeviceCount(&number), cudaSuccess);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(cudaGetDevice(&number), cudaErrorNoDevice);
    EXPECT_EQ(cudaSetDevice(0), cudaErrorNoDevice);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorNoDevice);
    void* memory = nullptr;
    EXPECT_EQ(cudaMalloc(&memory, 1), cudaErrorNoDevice);
    EXPECT_EQ(cudaGetLastError(), cudaErrorNoDevice);
}

TEST_F(FaultTest, RefusesTheNthCallOnce) {
    resetCallCounts();
    injectFault({.call = "cudaMalloc", .nth = 2});
    void* first = nullptr;
    void* second = nullptr;
    EXPECT_EQ(cudaMalloc(&first, 8), cudaSuccess);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_FALSE(faultFired());
    EXPECT_EQ(cudaMalloc(&second, 8), cudaErrorMemoryAllocation);
    EXPECT_TRUE(faultFired());
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(cudaMalloc(&second, 8), cudaSuccess);
    EXPECT_EQ(callCount("cudaMalloc"), 3u) << "the refused one too";
    EXPECT_EQ(callCount(), 4u);
    EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);

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
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress);
    std::thread([] { EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress); }).join();
    EXPECT_EQ(cudaSetDevice(1), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaSetDevice(0), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaDeviceReset(), cudaSuccess);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_EQ(deviceUse().liveAllocations, 0u);

    injectFault({.call = "", .kind = FaultKind::failed});
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorLaunchFailure);
    clearFault();
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
}

TEST_F(FaultTest, PropertiesAreThoseOfTheShownDevice) {
    const ScopedDevices devices(2, 123456);
    cudaDeviceProp properties{};
    ASSERT_EQ(cudaGetDeviceProperties(&properties, 1), cudaSuccess);
    EXPECT_EQ(properties.totalGlobalMem, 123456u);
    int major = 0, minor = -1;
    EXPECT_EQ(cudaDeviceGetAttribute(&major, static_cast<cudaDeviceAttr>(75), 0), cudaSuccess);
    EXPECT_EQ(cudaDeviceGetAttribute(&minor, static_cast<cudaDeviceAttr>(76), 0), cudaSuccess);
    EXPECT_EQ(major, properties.major);
    EXPECT_EQ(minor, properties.minor);
    EXPECT_EQ(cudaDeviceGetAttribute(&major, cudaDevAttrComputeCapabilityMajor, 2), cudaErrorInvalidDevice);
}

}  // namespace
}  // namespace zel::host
