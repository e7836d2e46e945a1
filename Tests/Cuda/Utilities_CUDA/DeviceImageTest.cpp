#include "Utilities_CUDA/DeviceImage.h"

#include <gtest/gtest.h>
#include <host_device.h>

#include "NonLocalMeans/CudaUtils_CUDA.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;

TEST(DeviceImageTest, KeepsItsMemoryWhileTheSizeFits) {
    DeviceImage<float> image(100, 20, 3, true);
    const auto isKeptFor = [&](std::size_t width, std::size_t height, std::size_t depth, bool exact) {
        host::resetCallCounts();
        image.resize(width, height, depth, exact);
        EXPECT_EQ(image.pitch() % 256, 0U);
        EXPECT_EQ(image.slicePitch(), image.height() * image.pitch());
        return host::callCount() == 0;
    };
    EXPECT_TRUE(isKeptFor(60, 20, 3, true)) << "narrower rows fit the pitch";
    EXPECT_TRUE(isKeptFor(128, 20, 3, true)) << "so do wider rows, into the padding";
    EXPECT_TRUE(isKeptFor(60, 10, 2, false));
    EXPECT_EQ(image.width(), 100U) << "the fields are those of the allocation";
    EXPECT_FALSE(isKeptFor(60, 10, 3, true)) << "exact means the same height";
    EXPECT_FALSE(isKeptFor(60, 10, 2, true)) << "and depth";
    EXPECT_FALSE(isKeptFor(60, 10, 4, false));
    EXPECT_FALSE(isKeptFor(600, 10, 4, false));
    EXPECT_FALSE(isKeptFor(600, 11, 4, false));
    EXPECT_EQ(image.height(), 11U);
}

TEST(DeviceImageTest, PlainRowsArePackedAndAZeroSizeIsLegal) {
    DeviceImage<double> packed(7, 5, false);
    EXPECT_EQ(packed.pitch(), 7 * sizeof(double));
    EXPECT_EQ(packed.depth(), 1U);
    packed.clear();
    EXPECT_EQ(packed.data(), nullptr);
    EXPECT_EQ(packed.pitch() + packed.slicePitch() + packed.width() + packed.height() + packed.depth(), 0U);

    host::resetCallCounts();
    DeviceImage<float>(0, 0, 0, true);
    EXPECT_EQ(host::callCount(), 0U) << "an empty buffer asks the device for nothing";
    EXPECT_NO_THROW(DeviceImage<float>(0, 5, false));
}

TEST(DeviceImageTest, DropsTheOldMemoryBeforeItAsksForNew) {
    const std::uint64_t before = host::deviceUse().liveBytes;
    DeviceImage<std::uint8_t> image(1024, 1024, false);
    host::resetPeakBytes();
    image.resize(1024, 2048, true);
    EXPECT_EQ(host::deviceUse().peakBytes, before + 1024 * 2048);

    host::injectFault({.call = "cudaMalloc"});
    EXPECT_THROW(image.resize(1024, 4096, true), RuntimeError);
    EXPECT_EQ(image.data(), nullptr);
    EXPECT_EQ(host::deviceUse().liveBytes, before);
}

TEST(GetDeviceCoreInfoTest, KnowsTheHostDevice) {
    unsigned multiProcessors = 0, cores = 0;
    getDeviceCoreInfo(0, multiProcessors, cores);
    EXPECT_EQ(std::pair(multiProcessors, cores), std::pair(132U, 128U));
    EXPECT_THROW(getDeviceCoreInfo(99, multiProcessors, cores), RuntimeError);
}

TEST(GetFreeDeviceMemoryTest, FallsByWhatIsAllocated) {
    const std::size_t before = amnlm::getFreeDeviceMemory();
    const auto memory = allocateDeviceMemory(1 << 20);
    EXPECT_EQ(amnlm::getFreeDeviceMemory(), before - (1 << 20));
}
