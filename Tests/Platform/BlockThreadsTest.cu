// Faults of kernels that the build with fibers for threads has to find, each with kernel, block and thread.

#include <lanes.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "DeviceFixture.h"

namespace zel::cuda {
namespace {

using host::DeviceArray;
using host::DeviceTest;
using host::shape;

/// The order of the threads for a scope.
class ScopedSeed {
public:
    explicit ScopedSeed(int seed) { setenv(variable, std::to_string(seed).c_str(), 1); }
    ~ScopedSeed() { unsetenv(variable); }
    ScopedSeed(const ScopedSeed&) = delete;
    ScopedSeed& operator=(const ScopedSeed&) = delete;

private:
    static constexpr auto variable = "ZEL_HOST_THREAD_SEED";
};

using BlockThreadsDeathTest = host::DeviceDeathTest;
using BlockThreadsTest = DeviceTest;

/// Turns each block's numbers around.
template <bool withBarrier>
__global__ void reversalKernel(unsigned int* out) {
    auto* const shared = dynamicShared<unsigned int>();
    shared[threadIdx.x] = threadIdx.x;
    if (withBarrier) blockBarrier();
    out[blockIdx.x * blockDim.x + threadIdx.x] = shared[blockDim.x - 1 - threadIdx.x];
}

template <bool withBarrier>
std::vector<unsigned int> reversed(unsigned int blocks, unsigned int threads, std::size_t sharedBytes) {
    auto config = shape(dim3(blocks), dim3(threads));
    config.dynamicSmemBytes = sharedBytes;
    std::vector<unsigned int> out(blocks * threads);
    EXPECT_EQ(cudaLaunchKernelEx(&config, reversalKernel<withBarrier>, out.data()), cudaSuccess);
    return out;
}

TEST_F(BlockThreadsTest, BarrierLeftOutGivesOtherResultsInAnyOrder) {
    std::vector<unsigned int> expected;
    for (int block = 0; block < 3; ++block)
        for (unsigned int thread = 0; thread < 16; ++thread) expected.push_back(15 - thread);
    for (int seed = 1; seed <= 20; ++seed) {
        const ScopedSeed scoped(seed);
        EXPECT_EQ(reversed<true>(3, 16, 64), expected) << seed;
        EXPECT_NE(reversed<false>(3, 16, 64), expected) << seed;
    }
}

TEST_F(BlockThreadsDeathTest, WritesBehindSharedMemory) {
    EXPECT_DEATH(reversed<true>(1, 16, 60),
                 "kernel .*reversalKernel<true>, block \\(0, 0, 0\\), thread \\(15, 0, 0\\), ZEL_HOST_THREAD_SEED=1: "
                 "a byte at offset 60 of shared memory of 60 bytes was written");
}

/// Threads from `first` on come to a barrier; the others to another one, or to none.
__global__ void divergentKernel(unsigned int first, bool others) {
    blockBarrier();
    if (threadIdx.x >= first)
        blockBarrier();
    else if (others)
        blockBarrier();
}

void launchDivergent(unsigned int first, bool others) {
    const auto config = shape(dim3(2, 1, 3), dim3(4, 2));
    EXPECT_EQ(cudaLaunchKernelEx(&config, divergentKernel, first, others), cudaSuccess);
}

TEST_F(BlockThreadsDeathTest, BarriersThatNotAllThreadsReach) {
    const std::string kernel = "kernel .*divergentKernel, block \\([01], 0, [012]\\), ";
    launchDivergent(0, false);
    launchDivergent(4, false);
    EXPECT_DEATH(launchDivergent(3, false),
                 kernel +
                     "thread \\(3, [01], 0\\), .*it waits at its barrier number 2, BlockThreadsTest.cu:[0-9]+, "
                     "but thread \\([012], [01], 0\\) ended after 1");
    EXPECT_DEATH(launchDivergent(3, true), kernel +
                                               "thread .*waits at its barrier number 2, BlockThreadsTest.cu:[0-9]+, "
                                               "but thread .* waits at another one, BlockThreadsTest.cu:[0-9]+");
}

template <class T>
__global__ void unguardedKernel(T* values, std::ptrdiff_t distance) {
    values[std::ptrdiff_t{blockIdx.x} * blockDim.x + threadIdx.x + distance] = 1;
}

TEST_F(BlockThreadsDeathTest, IndicesOutsideOfMemory) {
    const DeviceArray<float> values(100);
    const auto launch = [&](std::ptrdiff_t distance) {
        const auto config = shape(dim3(2), dim3(64));
        EXPECT_EQ(cudaLaunchKernelEx(&config, unguardedKernel<float>, values.get(), distance), cudaSuccess);
    };
    const std::string kernel = "kernel .*unguardedKernel<float>, block ";
    EXPECT_DEATH(launch(0), kernel +
                                "\\(1, 0, 0\\), thread \\((3[6-9]|[456].), 0, 0\\), .*: "
                                "a byte at offset 4.. of an allocation of 400 bytes was written");
    EXPECT_DEATH(launch(-1), kernel + "\\([01], 0, 0\\), thread .* at offset .* of an allocation of 400 bytes");
    EXPECT_DEATH(launch(std::ptrdiff_t{1} << 40), kernel + "\\([01], 0, 0\\), thread .*: there is no memory at 0x");
}

__global__ void failingThreadKernel(int* passed) {
    if (threadIdx.x == 7) throw std::runtime_error("a thread's own");
    blockBarrier();
    *passed = 1;
}

// The threads that wait for it end where they are.
TEST_F(BlockThreadsTest, ExceptionOfAThreadIsTheStatusOfItsLaunch) {
    int passed = 0;
    const auto config = shape(dim3(5), dim3(64));
    EXPECT_EQ(cudaLaunchKernelEx(&config, failingThreadKernel, &passed), cudaErrorUnknown);
    EXPECT_EQ(passed, 0);
    EXPECT_EQ(reversed<true>(1, 4, 16), (std::vector<unsigned int>{3, 2, 1, 0}));
}

}  // namespace
}  // namespace zel::cuda
