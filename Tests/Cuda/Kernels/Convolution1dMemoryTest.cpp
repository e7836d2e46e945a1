#include <gtest/gtest.h>
#include <host_device.h>

#include <numeric>
#include <vector>

#include "DeviceVectors.h"
#include "Kernels/CudaConvolution1d.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

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
        const auto image = toDevice(values_), taps = toDevice(std::vector{0.1F, 0.2F, 0.4F, 0.2F, 0.1F});
        auto* const address = static_cast<std::uint16_t*>(image.get());
        host::resetPeakBytes();
        host::resetCallCounts();
        axis.convolution(address, width * 2, width * height * 2, address, width * 2, width * height * 2, width, height,
                         depth, static_cast<const float*>(taps.get()), tapCount, nullptr, 8, 4);
        return toHost<std::uint16_t>(image, pixels);
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
