#include <gtest/gtest.h>
#include <host_device.h>

#include <numeric>
#include <vector>

#include "Kernels/CudaConvolution1d.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;

namespace {

constexpr std::uint64_t width = 70, height = 9, depth = 11, pixels = width * height * depth, tapCount = 5;

using Convolution = decltype(&convolution1dOnRows<std::uint16_t, std::uint16_t>);

/// A launcher with what its launch is made of, at limits of 8 blocks and 4 threads.
struct Axis {
    Convolution convolution;
    std::uint64_t blocks, length;
};
const Axis axes[]{
    {convolution1dOnRows, 8, width}, {convolution1dOnColumns, 8, height}, {convolution1dOnZLines, 8, depth}};

/// Image and taps on the device.
class Convolution1dMemoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        values_.resize(pixels);
        std::iota(values_.begin(), values_.end(), std::uint16_t{0});
    }
    void TearDown() override {
        host::clearFault();
        cudaGetLastError();
        EXPECT_EQ(host::deviceUse().liveAllocations, 0u);
    }

    std::vector<std::uint16_t> run(const Axis& axis) const {
        const float taps[tapCount]{0.1F, 0.2F, 0.4F, 0.2F, 0.1F};
        const auto image = allocateDeviceMemory(pixels * sizeof(std::uint16_t)),
                   deviceTaps = allocateDeviceMemory(sizeof taps);
        auto* const address = static_cast<std::uint16_t*>(image.get());
        cudaMemcpy(image.get(), values_.data(), pixels * sizeof(std::uint16_t), cudaMemcpyHostToDevice);
        cudaMemcpy(deviceTaps.get(), taps, sizeof taps, cudaMemcpyHostToDevice);
        host::resetPeakBytes();
        host::resetCallCounts();
        axis.convolution(address, width * 2, width * height * 2, address, width * 2, width * height * 2, width, height,
                         depth, static_cast<const float*>(deviceTaps.get()), tapCount, nullptr, 8, 4);
        std::vector<std::uint16_t> result(pixels);
        cudaMemcpy(result.data(), image.get(), pixels * sizeof(std::uint16_t), cudaMemcpyDeviceToHost);
        return result;
    }

    std::vector<std::uint16_t> values_;
};

}  // namespace

TEST_F(Convolution1dMemoryTest, TakesALineAndATablePerBlockForOneLaunch) {
    for (const Axis& axis : axes) {
        run(axis);
        const std::uint64_t own = pixels * sizeof(std::uint16_t) + tapCount * sizeof(float);
        EXPECT_EQ(host::deviceUse().peakBytes - own, axis.blocks * (axis.length + tapCount - 1) * (2 + 8));
        EXPECT_EQ(host::callCount("cudaMalloc"), 2u);
        EXPECT_EQ(host::callCount("cudaLaunchKernelEx"), 1u);
    }
}

TEST_F(Convolution1dMemoryTest, LaunchesNothingWithoutItsScratch) {
    for (const Axis& axis : axes)
        for (const std::uint64_t nth : {3, 4}) {  // behind those of the image and the taps
            host::injectFault({.call = "cudaMalloc", .nth = nth});
            EXPECT_THROW(run(axis), RuntimeError);
            EXPECT_TRUE(host::faultFired());
            EXPECT_EQ(host::callCount("cudaLaunchKernelEx"), 0u);
            EXPECT_EQ(host::deviceUse().liveAllocations, 0u);
        }
}

// Work that starts late, blocks in another order, and memory that shows what is read before or written beside it.
TEST_F(Convolution1dMemoryTest, GivesTheSameUnderAllTestModes) {
    for (const Axis& axis : axes) {
        const auto expected = run(axis);
        const host::ScopedTestModes modes({.deferredStreams = true,
                                           .protectedMemory = true,
                                           .poison = true,
                                           .redZones = true,
                                           .blockShuffleSeed = 5});
        EXPECT_EQ(run(axis), expected);
    }
}
