#include <lanes.h>

#include <array>
#include <cstdlib>
#include <string>

#include "DeviceFixture.h"

namespace zel::host {
namespace {

using TestModesTest = DeviceTest;

/// Its tests end copies of the process, which start anew: forking one with threads is not safe.
class TestModesDeathTest : public DeviceTest {
protected:
    TestModesDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

__global__ void storeKernel(int* place, int value) {
    *place = value;
}

cudaError_t store(int* place, int value, cudaStream_t stream = nullptr) {
    cudaLaunchConfig_t config{};
    config.gridDim = dim3(1);
    config.blockDim = dim3(1);
    config.stream = stream;
    return cudaLaunchKernelEx(&config, storeKernel, place, value);
}

/// Two streams and one value on the device that tells which work ran last.
class DeferredTest : public DeviceTest {
protected:
    void SetUp() override {
        cudaStreamCreate(&a_);
        cudaStreamCreate(&b_);
        cudaMalloc(&value_, sizeof(int));
        cudaMemsetAsync(value_, 0, sizeof(int));
        cudaDeviceSynchronize();
    }
    void TearDown() override {
        cudaStreamDestroy(a_);
        cudaStreamDestroy(b_);
        cudaFree(value_);
        DeviceTest::TearDown();
    }

    const ScopedTestModes modes_{{.deferredStreams = true}};
    cudaStream_t a_ = nullptr, b_ = nullptr;
    int* value_ = nullptr;
};

TEST_F(DeferredTest, WorkWaitsForASynchronisation) {
    ASSERT_EQ(store(value_, 5, a_), cudaSuccess);
    EXPECT_EQ(*value_, 0);
    ASSERT_EQ(cudaStreamSynchronize(b_), cudaSuccess);
    EXPECT_EQ(*value_, 0);
    ASSERT_EQ(cudaStreamSynchronize(a_), cudaSuccess);
    EXPECT_EQ(*value_, 5);

    ASSERT_EQ(store(value_, 6, b_), cudaSuccess);
    int back = 0;
    ASSERT_EQ(cudaMemcpy(&back, value_, sizeof back, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(back, 6);

    ASSERT_EQ(store(value_, 7, b_), cudaSuccess);
    ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(*value_, 7);
}

TEST_F(DeferredTest, AsynchronousCopiesReadHostMemoryWhenTheyRun) {
    int source = 1;
    ASSERT_EQ(cudaMemcpyAsync(value_, &source, sizeof source, cudaMemcpyHostToDevice, a_), cudaSuccess);
    source = 2;
    ASSERT_EQ(cudaStreamSynchronize(a_), cudaSuccess);
    EXPECT_EQ(*value_, 2);
}

// What the default stream waits for, and what waits for it, comes first; another stream's later work does not.
TEST_F(DeferredTest, DefaultStreamOrdersTheOthers) {
    std::array<int*, 4> places{};
    for (int*& place : places) {
        ASSERT_EQ(cudaMalloc(&place, sizeof(int)), cudaSuccess);
        ASSERT_EQ(cudaMemsetAsync(place, 0, sizeof(int)), cudaSuccess);
    }
    ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    store(places[0], 1, b_);
    store(places[1], 1);
    store(places[2], 1, b_);
    store(places[3], 1, a_);
    ASSERT_EQ(cudaStreamSynchronize(a_), cudaSuccess);
    EXPECT_EQ(*places[0], 1);
    EXPECT_EQ(*places[1], 1);
    EXPECT_EQ(*places[2], 0);
    EXPECT_EQ(*places[3], 1);
    for (int* place : places) EXPECT_EQ(cudaFree(place), cudaSuccess);  // waits for the rest
}

TEST_F(DeferredTest, DestroyingAStreamRunsItsWorkAndResetDropsIt) {
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    store(value_, 3, stream);
    ASSERT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    EXPECT_EQ(*value_, 3);
    int host = 0;
    cudaMemcpyAsync(&host, value_, sizeof host, cudaMemcpyDeviceToHost, a_);
    ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(host, 0);
}

TEST_F(TestModesTest, PoisonFillsFreshMemory) {
    const ScopedTestModes modes({.poison = true});
    const DeviceArray<unsigned char> array(5000);
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(array.get()[i], 0xCD);
}

TEST_F(TestModesTest, StrictReleasesReportWhatAResetHasEnded) {
    for (const bool strict : {false, true}) {
        SCOPED_TRACE(strict);
        const ScopedTestModes modes({.strictReleases = strict});
        void* memory = nullptr;
        cudaStream_t stream = nullptr;
        ASSERT_EQ(cudaMalloc(&memory, 1), cudaSuccess);
        ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
        ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
        EXPECT_EQ(cudaFree(memory), cudaErrorInvalidValue);
        EXPECT_EQ(cudaGetLastError(), strict ? cudaErrorInvalidValue : cudaSuccess);
        EXPECT_EQ(cudaStreamDestroy(stream), cudaErrorInvalidResourceHandle);
        EXPECT_EQ(cudaGetLastError(), strict ? cudaErrorInvalidResourceHandle : cudaSuccess);
    }
}

TEST_F(TestModesTest, ModesLastForTheirScope) {
    {
        const ScopedTestModes outer({.redZones = true, .blockShuffleSeed = 3});
        const ScopedTestModes inner({.poison = true});
        EXPECT_TRUE(testModes().poison);
        EXPECT_FALSE(testModes().redZones);
    }
    EXPECT_FALSE(testModes().redZones || testModes().poison || testModes().blockShuffleSeed != 0);
}

TEST_F(TestModesDeathTest, ProtectedMemoryIsOpenToWorkOnly) {
    const ScopedTestModes modes({.protectedMemory = true, .poison = true, .redZones = true});
    const DeviceArray<int> array(1000);
    volatile int* const place = array.get() + 999;
    EXPECT_DEATH(*place = 1, "");
    ASSERT_EQ(store(array.get() + 999, 12), cudaSuccess);
    int back = 0;
    ASSERT_EQ(cudaMemcpy(&back, array.get() + 999, sizeof back, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(back, 12);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_DEATH(std::exit(*place), "");
}

TEST_F(TestModesDeathTest, RedZonesAreCheckedAtFreeAndSynchronisation) {
    const ScopedTestModes modes({.redZones = true});
    for (const std::ptrdiff_t bytes : {12, 3 << 20}) {
        SCOPED_TRACE(bytes);
        char* memory = nullptr;
        ASSERT_EQ(cudaMalloc(&memory, bytes), cudaSuccess);
        const auto damage = [&](std::ptrdiff_t offset) { memory[offset] = 1; };
        const std::string size = "of an allocation of " + std::to_string(bytes) + " bytes";
        EXPECT_DEATH((damage(bytes), cudaFree(memory)), "offset " + std::to_string(bytes) + " " + size);
        EXPECT_DEATH((damage(-2), cudaDeviceSynchronize()), "offset -2 " + size);
        EXPECT_DEATH((damage(bytes + 200), cudaStreamSynchronize(nullptr)), size);
        EXPECT_EQ(cudaFree(memory), cudaSuccess);
    }
}

}  // namespace
}  // namespace zel::host
