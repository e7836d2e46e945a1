#include <lanes.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "DeviceFixture.h"

namespace zel::host {
namespace {

using TestModesTest = DeviceTest;

using TestModesDeathTest = DeviceDeathTest;

__global__ void storeKernel(int* place, int value) {
    *place = value;
}

cudaError_t store(int* place, int value, cudaStream_t stream = nullptr) {
    const auto config = shape(dim3(1), dim3(1), stream);
    return cudaLaunchKernelEx(&config, storeKernel, place, value);
}

/// Two streams, and zeros on the device that tell which work has run.
class DeferredTest : public DeviceTest {
protected:
    DeferredTest() { EXPECT_THAT(Statuses({cudaStreamCreate(&a_), cudaStreamCreate(&b_)}), Each(cudaSuccess)); }
    ~DeferredTest() override { EXPECT_EQ(cudaStreamDestroy(a_), cudaStreamDestroy(b_)); }

    const ScopedTestModes modes_{{.deferredStreams = true}};
    const DeviceArray<int> array_{5, 0};
    int* const values_ = array_.get();
    cudaStream_t a_ = nullptr, b_ = nullptr;
};

TEST_F(DeferredTest, WorkWaitsForASynchronisation) {
    int source = 4, back = 0;
    EXPECT_EQ(cudaMemcpyAsync(values_, &source, sizeof source, cudaMemcpyHostToDevice, a_), cudaSuccess);
    source = 5;  // read when the copy runs
    EXPECT_EQ(cudaStreamSynchronize(b_), cudaSuccess);
    EXPECT_EQ(*values_, 0);
    EXPECT_EQ(cudaStreamSynchronize(a_), cudaSuccess);
    EXPECT_EQ(*values_, 5);
    store(values_, 6, b_);
    EXPECT_EQ(cudaMemcpy(&back, values_, sizeof back, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(back, 6);
}

// What the default stream waits for, and what waits for it, comes first; no other stream's later work does, nor the
// default stream's.
TEST_F(DeferredTest, DefaultStreamOrdersTheOthers) {
    const cudaStream_t streams[] = {b_, nullptr, b_, a_, nullptr};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(store(values_ + i, 1, streams[i]), cudaSuccess);
    EXPECT_EQ(cudaStreamSynchronize(a_), cudaSuccess);
    EXPECT_EQ(std::vector<int>(values_, values_ + 5), (std::vector<int>{1, 1, 0, 1, 0}));
}

TEST_F(DeferredTest, DestroyingAStreamRunsItsWorkAndResetDropsIt) {
    cudaStream_t stream = nullptr;
    int host = 0;
    EXPECT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    store(values_, 3, stream);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    EXPECT_EQ(*values_, 3);
    cudaMemcpyAsync(&host, values_, sizeof host, cudaMemcpyDeviceToHost, a_);
    EXPECT_THAT(Statuses({cudaDeviceReset(), cudaDeviceSynchronize()}), Each(cudaSuccess));
    EXPECT_EQ(host, 0);
}

TEST_F(TestModesTest, PoisonFillsFreshMemory) {
    const ScopedTestModes modes({.poison = true});
    const DeviceArray<unsigned char> array(5000);
    EXPECT_EQ(std::count(array.get(), array.get() + 5000, 0xCD), 5000);
}

TEST_F(TestModesTest, StrictReleasesReportWhatAResetHasEnded) {
    for (const bool strict : {false, true}) {
        SCOPED_TRACE(strict);
        const ScopedTestModes modes({.strictReleases = strict});
        void* memory = nullptr;
        cudaStream_t stream = nullptr;
        EXPECT_THAT(Statuses({cudaMalloc(&memory, 1), cudaStreamCreate(&stream), cudaDeviceReset()}),
                    Each(cudaSuccess));
        EXPECT_EQ(cudaFree(memory), cudaErrorInvalidValue);
        EXPECT_EQ(cudaGetLastError(), strict ? cudaErrorInvalidValue : cudaSuccess);
        EXPECT_EQ(cudaStreamDestroy(stream), cudaErrorInvalidResourceHandle);
        EXPECT_EQ(cudaGetLastError(), strict ? cudaErrorInvalidResourceHandle : cudaSuccess);
    }
}

TEST_F(TestModesDeathTest, ProtectedMemoryIsOpenToWorkOnly) {
    const ScopedTestModes modes({.protectedMemory = true, .poison = true, .redZones = true});
    const DeviceArray<int> array(1000);
    int* const last = array.get() + 999;
    volatile int* const place = last;
    int back = 0;
    EXPECT_DEATH(*place = 1, "");
    EXPECT_THAT(Statuses({store(last, 12), cudaMemcpy(&back, last, sizeof back, cudaMemcpyDeviceToHost),
                          cudaDeviceSynchronize()}),
                Each(cudaSuccess));
    EXPECT_EQ(back, 12);
    EXPECT_DEATH(std::exit(*place), "");
}

TEST_F(TestModesDeathTest, RedZonesAreCheckedAtFreeAndSynchronisation) {
    const ScopedTestModes modes({.redZones = true});
    for (const std::ptrdiff_t bytes : {12, 3 << 20}) {
        SCOPED_TRACE(bytes);
        const DeviceArray<char> array(static_cast<std::size_t>(bytes));
        const auto damage = [&](std::ptrdiff_t offset) { array.get()[offset] = 1; };
        const std::string size = "of an allocation of " + std::to_string(bytes) + " bytes";
        EXPECT_DEATH((damage(bytes), cudaFree(array.get())), "offset " + std::to_string(bytes) + " " + size);
        EXPECT_DEATH((damage(-2), cudaDeviceSynchronize()), "offset -2 " + size);
        EXPECT_DEATH((damage(bytes + 200), cudaStreamSynchronize(nullptr)), size);
    }
}

}  // namespace
}  // namespace zel::host
