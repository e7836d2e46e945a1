#include <lanes.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "DeviceFixture.h"
#include "host_runtime/Scratch.h"

namespace zel::host {
namespace {

using LaunchTest = DeviceTest;

constexpr std::size_t sharedCount = 64;

/// Counts where only a block of these coordinates should, and there the threads of a block, unless another block writes
/// to its shared memory.
__global__ void visitKernel(unsigned int* visits) {
    if (blockIdx.x >= gridDim.x || blockIdx.y >= gridDim.y || blockIdx.z >= gridDim.z) return;
    const std::size_t row = blockIdx.y + std::size_t{gridDim.y} * blockIdx.z, block = blockIdx.x + gridDim.x * row;
    cuda::onFirstLane([=] {
        auto* const shared = cuda::dynamicShared<std::size_t>();
        std::fill_n(shared, sharedCount, block);
        const bool isOwn = std::count(shared, shared + sharedCount, block) == sharedCount;
        if (isOwn && reinterpret_cast<std::uintptr_t>(shared) % 64 == 0)
            visits[block] += blockDim.x * blockDim.y * blockDim.z;
    });
}

// Grids from one block to many, in plain and in shuffled order.
TEST_F(LaunchTest, EachBlockOfTheGridRunsOnceWithSharedMemoryOfItsOwn) {
    for (const dim3 grid : {dim3(1), dim3(7), dim3(1, 5), dim3(3, 4, 5), dim3(100000), dim3(11, 130, 70)})
        for (const std::uint64_t seed : {0, 17}) {
            SCOPED_TRACE(::testing::Message() << grid.x << " x " << grid.y << " x " << grid.z << ", seed " << seed);
            const ScopedTestModes modes({.blockShuffleSeed = seed});
            std::vector<unsigned int> visits(std::size_t{grid.x} * grid.y * grid.z);
            auto config = shape(grid, dim3(4, 2, 3));
            config.dynamicSmemBytes = sharedCount * sizeof(std::size_t);
            ASSERT_EQ(cudaLaunchKernelEx(&config, visitKernel, visits.data()), cudaSuccess);
            EXPECT_EQ(visits, std::vector<unsigned int>(visits.size(), 24));
        }
}

__global__ void nothingKernel(int) {}

TEST_F(LaunchTest, RefusesImpossibleShapes) {
    constexpr dim3 some(1);
    const std::pair<dim3, dim3> shapes[] = {{dim3(0), some},           {dim3(1, 0), some},    {dim3(1, 65536), some},
                                            {dim3(0x80000000u), some}, {some, dim3(0)},       {some, dim3(1025)},
                                            {some, dim3(32, 33)},      {some, dim3(1, 1, 65)}};
    for (const auto& [grid, block] : shapes) {
        const auto config = shape(grid, block);
        EXPECT_THAT(Statuses({cudaLaunchKernelEx(&config, nothingKernel, 0), cudaGetLastError()}),
                    Each(cudaErrorInvalidConfiguration));
    }
    auto config = shape(some, dim3(1024));
    EXPECT_EQ(cudaLaunchKernelEx(&config, nothingKernel, 0), cudaSuccess);
    EXPECT_EQ(cudaLaunchKernelEx(&config, static_cast<void (*)(int)>(nullptr), 0), cudaErrorInvalidDeviceFunction);
    config.dynamicSmemBytes = 48 * 1024 + 1;
    EXPECT_EQ(cudaLaunchKernelEx(&config, nothingKernel, 0), cudaErrorInvalidValue);
}

TEST_F(LaunchTest, StreamBelongsToItsDevice) {
    const ScopedDevices devices(2, 1 << 20);
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    const auto config = shape(dim3(1), dim3(64), stream);
    EXPECT_THAT(Statuses({cudaLaunchKernelEx(&config, nothingKernel, 0), cudaSetDevice(1)}), Each(cudaSuccess));
    EXPECT_EQ(cudaLaunchKernelEx(&config, nothingKernel, 0), cudaErrorInvalidResourceHandle);
    EXPECT_THAT(Statuses({cudaSetDevice(0), cudaStreamDestroy(stream)}), Each(cudaSuccess));
    EXPECT_EQ(cudaStreamDestroy(stream), cudaErrorInvalidResourceHandle);
}

/// Threads that have met each other in a kernel.
struct Meeting {
    std::atomic<int> arrived{0};
    std::atomic<bool> met{false};

    /// Waits for a second thread, but not forever.
    void attend() {
        using namespace std::chrono_literals;
        thread_local const Meeting* attended = nullptr;
        if (std::exchange(attended, this) != this && ++arrived == 2) met = true;
        for (const auto end = std::chrono::steady_clock::now() + 10s; !met && std::chrono::steady_clock::now() < end;)
            std::this_thread::yield();
    }
};

/// Its first item is slow enough to make the others worth sharing, and they wait for a second thread.
__global__ void meetingKernel(Meeting* meeting, int* visits, std::uint64_t count) {
    cuda::forEachItemBundle(count, 0, count, [=](const auto bundle) {
        for (unsigned int lane = 0; lane < bundle.lanes; ++lane) ++visits[bundle.first + lane];
        if (bundle.first == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        else
            meeting->attend();
    });
}

// A projection of patches launches one block of 512 items: one thread did all of them.
TEST_F(LaunchTest, ThreadsShareTheItemsOfOneBlock) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "there is one thread";
    const auto config = shape(dim3(1), dim3(512));
    Meeting meeting;
    std::vector<int> visits(512);
    ASSERT_EQ(cudaLaunchKernelEx(&config, meetingKernel, &meeting, visits.data(), std::uint64_t{512}), cudaSuccess);
    EXPECT_TRUE(meeting.met);
    EXPECT_EQ(visits, std::vector<int>(512, 1));
}

/// Its scratch is more than there is, or else it fails by itself.
__global__ void failingKernel(bool withScratch) {
    if (withScratch) threadScratch(std::size_t{1} << 60);
    throw std::runtime_error("a kernel's own");
}

cudaError_t launchFailing(bool withScratch, unsigned int blocks, cudaStream_t stream = nullptr) {
    const auto config = shape(dim3(blocks), dim3(64), stream);
    return cudaLaunchKernelEx(&config, failingKernel, withScratch);
}

TEST_F(LaunchTest, ExceptionOfAKernelIsTheStatusOfItsLaunch) {
    for (const unsigned int blocks : {1u, 1000u}) {
        EXPECT_THAT(Statuses({launchFailing(true, blocks), cudaGetLastError()}), Each(cudaErrorMemoryAllocation));
        EXPECT_THAT(Statuses({launchFailing(false, blocks), cudaGetLastError()}), Each(cudaErrorUnknown));
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    }
}

// Each later synchronisation ran the work again. Freeing and ending go on all the same.
TEST_F(LaunchTest, QueuedWorkThatFailsIsToldOnce) {
    const ScopedTestModes modes({.deferredStreams = true});
    cudaStream_t stream = nullptr;
    void* memory = nullptr;
    EXPECT_THAT(Statuses({cudaStreamCreate(&stream), cudaMalloc(&memory, 8)}), Each(cudaSuccess));
    const auto tells = [&](const auto& call) {
        EXPECT_THAT(Statuses({launchFailing(true, 1, stream), launchFailing(false, 1, stream)}), Each(cudaSuccess));
        EXPECT_EQ(call(), cudaErrorMemoryAllocation) << "the first one's";
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    };
    tells([&] { return cudaStreamSynchronize(stream); });
    tells(cudaDeviceSynchronize);
    tells([&] { return cudaFree(memory); });
    tells([&] { return cudaStreamDestroy(stream); });
}

/// The last block to finish sums what all have published.
__global__ void sumKernel(std::uint64_t* published, unsigned int* counter, std::uint64_t* sum) {
    cuda::onFirstLane([=] {
        published[blockIdx.x] = blockIdx.x;
        __threadfence();
        if (atomicInc(counter, gridDim.x - 1) != gridDim.x - 1) return;
        *sum = 0;
        for (unsigned int b = 0; b < gridDim.x; ++b) *sum += published[b];
    });
}

TEST_F(LaunchTest, LastBlockSeesAllOthersAndTheCounterWraps) {
    constexpr std::uint64_t blocks = 20000;
    std::vector<std::uint64_t> published(blocks);
    unsigned int counter = 0;
    for (int round = 0; round < 20; ++round) {
        std::fill(published.begin(), published.end(), 0);
        std::uint64_t sum = 0;
        const auto config = shape(dim3(blocks));
        ASSERT_EQ(cudaLaunchKernelEx(&config, sumKernel, published.data(), &counter, &sum), cudaSuccess);
        EXPECT_EQ(sum, blocks * (blocks - 1) / 2);
        EXPECT_EQ(counter, 0u);
    }
}

__global__ void addOneKernel(std::uint32_t* values, std::uint64_t width) {
    std::uint32_t* const row = values + blockIdx.x * width;
    cuda::forEachColumn(width, [=](std::uint64_t x) { row[x] += 1; });
}

// Work that several threads give to one stream runs one after the other.
TEST_F(LaunchTest, ThreadsShareAStream) {
    constexpr std::uint64_t width = 500, height = 200;
    constexpr int threads = 4, launches = 500;
    const DeviceArray<std::uint32_t> values(width * height, 0);
    const auto launch = [&] {
        const auto config = shape(dim3(height));
        for (int i = 0; i < launches; ++i)
            EXPECT_EQ(cudaLaunchKernelEx(&config, addOneKernel, values.get(), width), cudaSuccess);
    };
    std::vector<std::thread> callers;
    for (int t = 0; t < threads; ++t) callers.emplace_back(launch);
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(std::count(values.get(), values.get() + width * height, threads * launches), width * height);
}

}  // namespace
}  // namespace zel::host
