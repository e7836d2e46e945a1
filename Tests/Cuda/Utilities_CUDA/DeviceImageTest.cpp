#include "Utilities_CUDA/DeviceImage.h"

#include <gtest/gtest.h>
#include <host_device.h>

#include <numeric>

#include "DeviceVectors.h"
#include "NonLocalMeans/CudaUtils_CUDA.h"
#include "Utilities_CUDA/DeviceCopy_CUDA.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;

namespace {

std::uint64_t allocations() {
    return host::callCount("cudaMalloc") + host::callCount("cudaMallocPitch") + host::callCount("cudaMalloc3D");
}

/// Allocations that a resize of the image makes.
template <typename T>
std::uint64_t allocationsOf(DeviceImage<T>& image, std::size_t width, std::size_t height, std::size_t depth,
                            bool exact) {
    const std::uint64_t before = allocations();
    image.resize(width, height, depth, exact);
    return allocations() - before;
}

}  // namespace

TEST(DeviceImageTest, KeepsItsMemoryWhileTheSizeFits) {
    DeviceImage<float> image(100, 20, 3, true);
    const std::size_t pitch = image.pitch();
    EXPECT_EQ(pitch % 256, 0U);
    EXPECT_EQ(image.slicePitch(), 20 * pitch);

    EXPECT_EQ(allocationsOf(image, 100, 20, 3, true), 0U);
    EXPECT_EQ(allocationsOf(image, 60, 20, 3, true), 0U) << "narrower rows fit the pitch";
    EXPECT_EQ(image.width(), 100U) << "the fields are those of the allocation";
    EXPECT_EQ(allocationsOf(image, 128, 20, 3, true), 0U) << "so do wider rows, into the padding";
    EXPECT_EQ(allocationsOf(image, 60, 10, 2, false), 0U);
    EXPECT_EQ(allocationsOf(image, 60, 10, 3, true), 1U) << "exact means the same height";
    EXPECT_EQ(allocationsOf(image, 60, 10, 2, true), 1U) << "and depth";
    EXPECT_EQ(image.slicePitch(), 10 * image.pitch());
    EXPECT_EQ(allocationsOf(image, 60, 10, 4, false), 1U);
    EXPECT_EQ(allocationsOf(image, 600, 10, 4, false), 1U);
    EXPECT_EQ(allocationsOf(image, 600, 11, 4, false), 1U);
}

TEST(DeviceImageTest, PlainRowsArePackedAndAZeroSizeIsLegal) {
    DeviceImage<double> packed(7, 5, false);
    EXPECT_EQ(packed.pitch(), 7 * sizeof(double));
    EXPECT_EQ(packed.depth(), 1U);
    packed.clear();
    EXPECT_EQ(packed.data(), nullptr);
    EXPECT_EQ(packed.pitch() + packed.slicePitch() + packed.width() + packed.height() + packed.depth(), 0U);

    const std::uint64_t before = host::callCount();
    const DeviceImage<float> nothing(0, 0, 0, true);
    EXPECT_EQ(host::callCount(), before) << "an empty buffer asks the device for nothing";
    EXPECT_NO_THROW(DeviceImage<float>(0, 0, true));
    EXPECT_NO_THROW(DeviceImage<float>(0, 5, false));
}

TEST(DeviceImageTest, DropsTheOldMemoryBeforeItAsksForNew) {
    const auto before = host::deviceUse();
    {
        DeviceImage<std::uint8_t> image(1024, 1024, false);
        host::resetPeakBytes();
        image.resize(1024, 2048, true);
        EXPECT_EQ(host::deviceUse().peakBytes, before.liveBytes + 1024 * 2048);

        host::injectFault({.call = "cudaMalloc"});
        EXPECT_THROW(image.resize(1024, 4096, true), RuntimeError);
        EXPECT_EQ(image.data(), nullptr);
        EXPECT_EQ(host::deviceUse().liveBytes, before.liveBytes);
    }
    EXPECT_EQ(host::deviceUse().liveAllocations, before.liveAllocations);
}

TEST(CopyDeviceVolumeTest, TakesEachVolumesOwnPitches) {
    using T = std::uint16_t;
    constexpr std::size_t width = 5, height = 3, depth = 2, size = sizeof(T);
    std::vector<T> values(8 * 4 * depth);
    std::iota(values.begin(), values.end(), T{0});
    const auto src = test::toDevice(values);
    for (const std::size_t copied : {depth, std::size_t{1}}) {
        std::vector<T> expected(6 * 5 * depth, 999);
        const auto dst = test::toDevice(expected);
        copyDeviceVolume(static_cast<const T*>(src.get()), 8 * size, 8 * 4 * size, static_cast<T*>(dst.get()), 6 * size,
                         6 * 5 * size, width, height, copied, nullptr);
        for (std::size_t i = 0; i < width * height * copied; ++i) {
            const std::size_t x = i % width, y = i / width % height, z = i / (width * height);
            expected[(z * 5 + y) * 6 + x] = values[(z * 4 + y) * 8 + x];
        }
        EXPECT_EQ(test::toHost<T>(dst, expected.size()), expected);
    }
}

TEST(GetDeviceCoreInfoTest, KnowsTheHostDevice) {
    unsigned multiProcessors = 0, cores = 0;
    getDeviceCoreInfo(0, multiProcessors, cores);
    EXPECT_EQ(multiProcessors, 132U);
    EXPECT_EQ(cores, 128U);
    EXPECT_THROW(getDeviceCoreInfo(99, multiProcessors, cores), RuntimeError);
}

TEST(GetFreeDeviceMemoryTest, FallsByWhatIsAllocated) {
    const std::size_t before = amnlm::getFreeDeviceMemory();
    const auto memory = allocateDeviceMemory(1 << 20);
    EXPECT_EQ(amnlm::getFreeDeviceMemory(), before - (1 << 20));
}
