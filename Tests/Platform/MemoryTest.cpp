#include <algorithm>
#include <cstring>
#include <limits>

#include "DeviceFixture.h"
#include "ProcessMemory.h"

namespace zel::host {
namespace {

using MemoryTest = DeviceTest;

constexpr std::uint64_t mebibyte = 1u << 20;

TEST_F(MemoryTest, AllocationsAreAlignedAndUsableToTheLastByte) {
    for (const bool redZones : {false, true}) {
        const ScopedTestModes modes({.redZones = redZones});
        for (const std::size_t bytes : {1, 63, 4096, 3 << 20}) {
            SCOPED_TRACE(::testing::Message() << bytes << " bytes, red zones " << redZones);
            const DeviceArray<unsigned char> array(bytes);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array.get()) % 64, 0u);
            std::memset(array.get(), 7, bytes);
        }
    }
}

TEST_F(MemoryTest, PitchedMemoryPadsRowsTo256Bytes) {
    void* memory = nullptr;
    std::size_t pitch = 0;
    cudaPitchedPtr volume{};
    ASSERT_EQ(cudaMallocPitch(&memory, &pitch, 257, 3), cudaSuccess);
    EXPECT_EQ(pitch, 512u);
    EXPECT_EQ(deviceUse().liveBytes, 771u);
    ASSERT_EQ(cudaMalloc3D(&volume, make_cudaExtent(256, 5, 2)), cudaSuccess);
    EXPECT_EQ(std::vector({volume.pitch, volume.xsize, volume.ysize}), (std::vector<std::size_t>{256, 256, 5}));
    EXPECT_THAT(Statuses({cudaMemsetAsync(memory, 1, 3 * pitch), cudaMemsetAsync(volume.ptr, 1, 2560)}),
                Each(cudaSuccess));
    EXPECT_EQ(cudaMemsetAsync(memory, 1, 3 * pitch + 1), cudaErrorInvalidValue);
    EXPECT_THAT(Statuses({cudaFree(memory), cudaFree(volume.ptr)}), Each(cudaSuccess));
}

TEST_F(MemoryTest, CapacityIsPerDevice) {
    const ScopedDevices devices(2, 10 * mebibyte);
    void *first = nullptr, *second = nullptr;
    std::size_t freeBytes = 0, totalBytes = 0;
    ASSERT_EQ(cudaMalloc(&first, 6 * mebibyte), cudaSuccess);
    EXPECT_EQ(cudaMalloc(&second, 4 * mebibyte + 1), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaMemGetInfo(&freeBytes, &totalBytes), cudaSuccess);
    EXPECT_EQ(std::pair(freeBytes, totalBytes), std::pair(4 * mebibyte, 10 * mebibyte));
    EXPECT_THAT(Statuses({cudaSetDevice(1), cudaMalloc(&second, 10 * mebibyte), cudaSetDevice(0)}), Each(cudaSuccess));
    EXPECT_THAT(Statuses({cudaFree(second), cudaFree(first)}), Each(cudaSuccess)) << "also of the other device";
}

TEST_F(MemoryTest, RefusesWhatCannotBe) {
    void* memory = &memory;
    std::size_t pitch = 0;
    constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(cudaMalloc(&memory, huge), cudaErrorMemoryAllocation);
    EXPECT_EQ(memory, nullptr);
    EXPECT_THAT(
        Statuses({cudaMallocPitch(&memory, &pitch, huge - 3, 1), cudaMallocPitch(&memory, &pitch, huge / 2, 3)}),
        Each(cudaErrorMemoryAllocation));
    EXPECT_THAT(Statuses({cudaMalloc(&memory, 0), cudaFree(nullptr)}), Each(cudaSuccess));
    EXPECT_EQ(memory, nullptr);
    const DeviceArray<char> array(100);
    EXPECT_THAT(Statuses({cudaMalloc(static_cast<void**>(nullptr), 1), cudaFree(array.get() + 1), cudaFree(&pitch)}),
                Each(cudaErrorInvalidValue));
}

// Both kinds of block: of the heap and of pages of their own.
TEST_F(MemoryTest, ResetEndsAllAndOldAddressesFailQuietly) {
    const auto allocateMany = [] {
        std::vector<void*> many;
        for (int i = 0; i < 100; ++i)
            for (const std::size_t bytes : {std::size_t{100}, std::size_t{1} << 20})
                EXPECT_EQ(cudaMalloc(&many.emplace_back(), bytes), cudaSuccess);
        return many;
    };
    const std::vector<void*> old = allocateMany();
    cudaStream_t stream = nullptr;
    EXPECT_THAT(Statuses({cudaStreamCreate(&stream), cudaDeviceReset()}), Each(cudaSuccess));
    EXPECT_EQ(deviceUse().liveAllocations + deviceUse().liveBytes + deviceUse().liveStreams, 0u);
    for (void* memory : allocateMany()) {
        EXPECT_EQ(std::count(old.begin(), old.end(), memory), 0);
        EXPECT_EQ(cudaFree(memory), cudaSuccess);
    }
    for (void* memory : old) EXPECT_EQ(cudaFree(memory), cudaErrorInvalidValue);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_EQ(cudaMemsetAsync(old[1], 0, 1), cudaErrorInvalidValue);
}

TEST_F(MemoryTest, ResetGivesFreedMemoryBack) {
    constexpr std::int64_t bytes = 64 * mebibyte;
    const test::ProcessMemory before;
    if (before.isSanitized()) GTEST_SKIP() << "nothing is given back";
    { const DeviceArray<char> filled(bytes, 1); }
    EXPECT_EQ(cudaDeviceReset(), cudaSuccess);
    EXPECT_LT(test::ProcessMemory().residentBytes - before.residentBytes, bytes / 2);
}

}  // namespace
}  // namespace zel::host
