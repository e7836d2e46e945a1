#include "Utilities_CUDA/Gpu_CUDA.h"

#include <gtest/gtest.h>
#include <host_device.h>

#include <memory>

#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;

/// Three devices, of which the first is the current one.
class GpuTest : public ::testing::Test {
protected:
    void TearDown() override {
        cudaSetDevice(0);
        EXPECT_EQ(host::deviceUse().liveStreams, streamsBefore_);
    }
    static int currentDevice() {
        int device = -1;
        cudaGetDevice(&device);
        return device;
    }

    const std::uint64_t streamsBefore_ = host::deviceUse().liveStreams;

private:
    host::ScopedDevices devices_{3, 64 << 20};
};

TEST_F(GpuTest, ContextWithoutStreamMakesOneForItsLife) {
    for (const CudaContext& given : {CudaContext{}, CudaContext{1, nullptr}}) {
        const auto context = makeNppStreamContext(&given);
        EXPECT_NE(context->hStream, nullptr);
        EXPECT_EQ(context->nCudaDeviceId, given.deviceId < 0 ? 0 : 1);
        EXPECT_EQ(context->nMultiProcessorCount, 132);
        EXPECT_EQ(context->nMaxThreadsPerBlock, 1024);
        EXPECT_EQ(context->nCudaDevAttrComputeCapabilityMajor, 9);
        EXPECT_EQ(host::deviceUse().liveStreams, streamsBefore_ + 1);
    }
    EXPECT_EQ(currentDevice(), 0) << "the current device is left alone";
}

TEST_F(GpuTest, ContextKeepsTheCallersStreamAndTakesAnIdOfNoGpuForTheCurrentOne) {
    cudaSetDevice(1);
    const auto stream = makeCudaStream();
    EXPECT_EQ(makeNppStreamContext(nullptr)->nCudaDeviceId, 1);
    for (const auto& [id, device] : {std::pair{2, 2}, {3, 1}, {100, 1}, {-1, 1}}) {
        const CudaContext given{id, *stream};
        const auto context = makeNppStreamContext(&given);
        EXPECT_EQ(context->hStream, *stream);
        EXPECT_EQ(context->nCudaDeviceId, device) << id;
    }
    EXPECT_EQ(cudaStreamSynchronize(*stream), cudaSuccess);
}

TEST_F(GpuTest, GuardSelectsADeviceAndPutsTheFormerOneBack) {
    cudaSetDevice(1);
    host::resetCallCounts();
    auto guard = makeChangeCurrentGpu(2);
    EXPECT_EQ(currentDevice(), 2);
    guard.reset();
    EXPECT_EQ(currentDevice(), 1);
    EXPECT_EQ(host::callCount("cudaSetDevice"), 2U);
    makeChangeCurrentGpu(1).reset();
    EXPECT_EQ(host::callCount("cudaSetDevice"), 3U) << "none to select what is selected, one to put it back";
    EXPECT_THROW(makeChangeCurrentGpu(7), RuntimeError);
    EXPECT_EQ(currentDevice(), 1);

    guard = makeChangeCurrentGpu(0);
    host::injectFault({.call = "cudaSetDevice"});
    EXPECT_NO_THROW(guard.reset()) << "an error in a destructor is swallowed";
    cudaGetLastError();
}

// A release that fails sets the pending error on a GPU, and the next checked launch would raise it.
TEST_F(GpuTest, OwnersThatOutliveAResetLeaveNoErrorPending) {
    const host::ScopedTestModes modes({.strictReleases = true});
    std::size_t pitch = 0;
    std::shared_ptr<const void> owners[] = {
        allocateDeviceMemory(1),
        allocateDevicePitched(pitch, 8, 2, 1),
        allocateDevicePitched(pitch, 8, 2, 2),
        makeCudaStream(),
        makeNppStreamContext(nullptr),
        tarnway_cuda::CudaImageView::allocate(tarnway::ElementType::uint8, 4, 3, 2),
    };
    ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    for (auto& owner : owners) {
        owner.reset();
        EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "owner " << &owner - owners;
    }
}

TEST_F(GpuTest, CountsDevicesAndReportsWhenItCannot) {
    EXPECT_EQ(getDeviceCount(), 3);
    host::injectFault({.call = "cudaGetDeviceCount"});
    EXPECT_THROW(getDeviceCount(), RuntimeError);
}
