// What the host device tells of the non-local means filter: its blocks on a small device, and what it makes of faults.

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "DeviceChecks.h"
#include "Messages.h"
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

namespace zel::test {
namespace {

constexpr std::uint64_t mib = 1048576;

/// A run on a smooth picture with noise.
struct SmallRun {
    explicit SmallRun(const ImageSize& size) : input(VoxelTypes::float32, size), output(VoxelTypes::float32, size) {
        const HostImage noise = randomImage<float>(size, 7);
        for (std::size_t i = 0; i < size.x * size.y * size.z; ++i)
            voxels<float>(input)[i] = static_cast<float>(1000 * std::sin(0.02 * static_cast<double>(i % size.x))) +
                                      static_cast<const float*>(noise.hostDataReadOnly())[i];
        filter.inputImage = &input;
        filter.outputImage = &output;
    }
    std::vector<float> result() {
        std::srand(1);
        filter.run();
        return readAll<float>(output);
    }

    HostImage input, output;
    cuda::CudaAdaptiveManifoldNlmFilter filter;
};

TEST(NonLocalMeansFaultsTest, SmallDevicesTakeBlocksWithoutSeams) {
    SmallRun run({300, 260, 1});
    const std::vector<float> whole = run.result();
    const host::ScopedDevices small(1, 4 * mib - 1);  // a budget of 3 MiB, in which fractions of one more do not count
    run.filter.haloRadius = 20;
    StepWatch watch;
    host::resetPeakBytes();
    std::srand(1);
    run.filter.run(&watch);
    EXPECT_GT(watch.total, 4U);
    EXPECT_EQ(watch.steps(), watch.total);
    EXPECT_LT(host::deviceUse().peakBytes, 4 * mib);
    const std::vector<float> blocks = readAll<float>(run.output);
    // Neighbours across a seam may not differ by more than they do within the whole image's result.
    const auto largestStep = [](const std::vector<float>& values) {
        float largest = 0;
        for (std::size_t i = 0; i < values.size(); ++i)
            if (i % 300 != 0) largest = std::max(largest, std::abs(values[i] - values[i - 1]));
        return largest;
    };
    EXPECT_LT(largestStep(blocks), 1.5f * largestStep(whole));
    double squares = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) squares += std::pow(whole[i] - blocks[i], 2);
    EXPECT_LT(std::sqrt(squares / static_cast<double>(whole.size())), 25) << "a quarter of the noise";

    run.filter.haloRadius = 200;
    EXPECT_EQ(messageOf<UnexpectedError>([&] { run.filter.run(); }), "Error, negative iteration block size.");
    EXPECT_EQ(host::deviceUse().liveBytes, 0U);
}

/// Lets the device refuse this call or fail in it, once for each so many of the times that a run makes it. Each such
/// run ends in an error of the kind and leaves nothing, and the next one is right.
template <typename Error>
void expectFaultsReported(SmallRun& run, const char* call, host::FaultKind kind, std::uint64_t step) {
    const std::vector<float> expected = run.result();
    host::resetCallCounts();
    run.result();
    const std::uint64_t count = host::callCount(call);
    EXPECT_GT(count, 0U);
    for (std::uint64_t nth = 1; nth <= count; nth += step) {
        SCOPED_TRACE(testing::Message() << call << ", call " << nth);
        host::injectFault({.call = call, .nth = nth, .kind = kind});
        EXPECT_THROW(run.result(), Error);
        EXPECT_TRUE(host::faultFired());
        host::clearFault();
        if (kind == host::FaultKind::failed) {
            EXPECT_EQ(cudaDeviceReset(), cudaSuccess);
        }
        EXPECT_EQ(host::deviceUse().liveBytes, 0U);
        EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
        if (kind == host::FaultKind::failed || nth + step > count) {
            EXPECT_EQ(run.result(), expected);
        }
    }
}

TEST(NonLocalMeansFaultsTest, RefusedCallsAreReportedAndNothingIsLeft) {
    SmallRun run({20, 16, 1});
    for (const char* const call :
         {"cudaGetDevice", "cudaGetDeviceProperties", "cudaMemGetInfo", "cudaDeviceSynchronize"})
        expectFaultsReported<RuntimeError>(run, call, host::FaultKind::refused, 23);
    for (const char* const call : {"cudaMalloc", "cudaMemcpy", "thrust::for_each", "thrust::reduce", "thrust::copy"})
        expectFaultsReported<std::exception>(run, call, host::FaultKind::refused, 23);
}

// The filter resets the device only where no call of Thrust meets the failure first.
TEST(NonLocalMeansFaultsTest, AFailedDeviceEndsTheRunAndTheNextOneIsRightAfterAReset) {
    SmallRun run({20, 16, 1});
    for (const char* const call : {"cudaLaunchKernelEx", "cudaMalloc", "thrust::reduce"})
        expectFaultsReported<std::exception>(run, call, host::FaultKind::failed, 41);
}

TEST(NonLocalMeansFaultsTest, PassesUnderEveryTestMode) {
    SmallRun run({30, 20, 3});
    const std::vector<float> expected = run.result();
    for (const host::TestModes& mode : everyTestMode) {
        const host::ScopedTestModes scoped(mode);
        EXPECT_EQ(run.result(), expected);
    }
}

}  // namespace
}  // namespace zel::test
