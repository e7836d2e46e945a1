#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "DeviceFixture.h"
#include "ProcessMemory.h"

namespace zel::host {
namespace {

using MemoryTest = DeviceTest;

constexpr std::uint64_t mebibyte = 1u << 20;

TEST_F(MemoryTest, AllocationsAreAlignedAndUsableToTheLastByte) {
    for (const bool redZones : {false, true}) {
        const ScopedTestModes modes({.redZones = redZones});
        for (const std::size_t bytes : {std::size_t{1}, std::size_t{63}, std::size_t{4096}, std::size_t{3 << 20}}) {
            SCOPED_TRACE(::testing::Message() << bytes << " bytes, red zones " << redZones);
            unsigned char* memory = nullptr;
            ASSERT_EQ(cudaMalloc(&memory, bytes), cudaSuccess);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 64, 0u);
            std::memset(memory, 7, bytes);
            EXPECT_EQ(cudaFree(memory), cudaSuccess);
        }
    }
}

TEST_F(MemoryTest, PitchedMemoryPadsRowsTo256Bytes) {
    void* memory = nullptr;
    std::size_t pitch = 0;
    ASSERT_EQ(cudaMallocPitch(&memory, &pitch, 257, 3), cudaSuccess);
    EXPECT_EQ(pitch, 512u);
    EXPECT_EQ(deviceUse().liveBytes, 771u);
    EXPECT_EQ(cudaMemsetAsync(memory, 1, 3 * pitch), cudaSuccess);
    EXPECT_EQ(cudaMemsetAsync(memory, 1, 3 * pitch + 1), cudaErrorInvalidValue);
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(memory), cudaSuccess);

    cudaPitchedPtr volume{};
    ASSERT_EQ(cudaMalloc3D(&volume, make_cudaExtent(256, 5, 2)), cudaSuccess);
    EXPECT_EQ(volume.pitch, 256u);
    EXPECT_EQ(volume.xsize, 256u);
    EXPECT_EQ(volume.ysize, 5u);
    EXPECT_EQ(cudaMemsetAsync(volume.ptr, 1, 2560), cudaSuccess);
    EXPECT_EQ(cudaFree(volume.ptr), cudaSuccess);
}

TEST_F(MemoryTest, CapacityIsPerDevice) {
    const ScopedDevices devices(2, 10 * mebibyte);
    void* first = nullptr;
    void* second = nullptr;
    ASSERT_EQ(cudaMalloc(&first, 6 * mebibyte), cudaSuccess);
    EXPECT_EQ(cudaMalloc(&second, 4 * mebibyte + 1), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
    std::size_t freeBytes = 0, totalBytes = 0;
    EXPECT_EQ(cudaMemGetInfo(&freeBytes, &totalBytes), cudaSuccess);
    EXPECT_EQ(freeBytes, 4 * mebibyte);
    EXPECT_EQ(totalBytes, 10 * mebibyte);

    ASSERT_EQ(cudaSetDevice(1), cudaSuccess);
    EXPECT_EQ(cudaMalloc(&second, 10 * mebibyte), cudaSuccess);
    ASSERT_EQ(cudaSetDevice(0), cudaSuccess);
    EXPECT_EQ(cudaFree(second), cudaSuccess);  // of the other device
    EXPECT_EQ(cudaFree(first), cudaSuccess);
}

TEST_F(MemoryTest, RefusesWhatCannotBe) {
    void* memory = &memory;
    std::size_t pitch = 0;
    constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(cudaMalloc(&memory, huge), cudaErrorMemoryAllocation);
    EXPECT_EQ(memory, nullptr);
    EXPECT_EQ(cudaMallocPitch(&memory, &pitch, huge - 3, 1), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaMallocPitch(&memory, &pitch, huge / 2, 3), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaMalloc(static_cast<void**>(nullptr), 1), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMalloc(&memory, 0), cudaSuccess);
    EXPECT_EQ(memory, nullptr);

    const DeviceArray<char> array(100);
    EXPECT_EQ(cudaFree(array.get() + 1), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(&pitch), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
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
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    EXPECT_EQ(deviceUse().liveAllocations + deviceUse().liveBytes + deviceUse().liveStreams, 0u);
    const std::vector<void*> fresh = allocateMany();
    for (void* memory : fresh) {
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
    void* memory = nullptr;
    ASSERT_EQ(cudaMalloc(&memory, bytes), cudaSuccess);
    ASSERT_EQ(cudaMemsetAsync(memory, 1, bytes), cudaSuccess);
    EXPECT_EQ(cudaFree(memory), cudaSuccess);
    EXPECT_EQ(cudaDeviceReset(), cudaSuccess);
    EXPECT_LT(test::ProcessMemory().residentBytes - before.residentBytes, bytes / 2);
}

}  // namespace
}  // namespace zel::host
