#include "Utilities_CUDA/ImageTransfer_CUDA.h"

#include <gtest/gtest.h>
#include <host_device.h>

#include "Messages.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "zel/ImageModelSizeProxy.h"

using namespace zel;
using namespace zel::cuda;
using test::messageOf;
using test::randomImage;
using test::readAll;
using test::RowsOnlyImage;

namespace {

/// Up to the device and down into `target`; slices lie three rows further apart there than they need to.
template <typename T>
void roundTrip(const ImageModel& source, ImageModel& target, bool as3d) {
    const std::size_t height = source.getDimension(1);
    DeviceImage<T> device(source.getDimension(0), height + 3, source.getDimension(2), true);
    if (as3d) {
        copyImageToDevice3d(source, device.data(), device.pitch(), device.slicePitch(), 0, 0, nullptr);
        copyDeviceToImage3d(device.data(), device.pitch(), device.slicePitch(), target, 0, 0, nullptr);
    } else {
        copyImageToDevice2d(source, device.data(), device.pitch(), 0, 0, nullptr);
        copyDeviceToImage2d(device.data(), device.pitch(), target, 0, 0, nullptr);
    }
}

template <typename T>
void expectRoundTrips(const ImageSize& size) {
    const HostImage source = randomImage<T>(size, 11);
    const RowsOnlyImage rows(randomImage<T>(size, 11));
    const std::vector<T> expected = readAll<T>(source);
    for (const bool as3d : {false, true}) {
        if (!as3d && size.z > 1) continue;
        for (const ImageModel* from :
             {static_cast<const ImageModel*>(&source), static_cast<const ImageModel*>(&rows)}) {
            HostImage direct(source.getDataType(), size);
            RowsOnlyImage staged(HostImage(source.getDataType(), size));
            roundTrip<T>(*from, direct, as3d);
            roundTrip<T>(*from, staged, as3d);
            EXPECT_EQ(readAll<T>(direct), expected);
            EXPECT_EQ(readAll<T>(staged), expected);
        }
    }
}

}  // namespace

TEST(ImageTransferTest, BringsEveryImageBackAsItWas) {
    expectRoundTrips<std::uint8_t>({1, 1});
    expectRoundTrips<std::uint8_t>({37, 5});
    expectRoundTrips<std::int16_t>({300, 7, 4});
    expectRoundTrips<double>({65, 3, 2});
    // Rows of a third of the staging buffer, so that chunks of three, three and one go over slice borders.
    expectRoundTrips<float>({87381, 7, 2});
}

TEST(ImageTransferTest, CopiesInOneGoWhatIsContiguousAndInChunksWhatIsNot) {
    const auto copies = [](const ImageModel& image) {
        DeviceImage<std::uint8_t> device(image.getDimension(0), image.getDimension(1), true);
        host::resetCallCounts();
        copyImageToDevice2d(image, device.data(), device.pitch(), 0, 0, nullptr);
        EXPECT_EQ(host::callCount("cudaDeviceSynchronize"), host::callCount("cudaMemcpy2DAsync"));
        return host::callCount("cudaMemcpy2DAsync");
    };
    const auto rows = [](std::size_t width, std::size_t height) {
        return RowsOnlyImage(HostImage(VoxelTypes::uint8, {width, height}));
    };
    EXPECT_EQ(copies(HostImage(VoxelTypes::uint8, {1000000, 4})), 1U);
    EXPECT_EQ(copies(rows(100, 5)), 1U);
    EXPECT_EQ(copies(rows(500000, 5)), 3U) << "chunks of 2, 2 and 1 rows";
    EXPECT_EQ(copies(rows(1048576, 3)), 3U) << "a row that just fills the buffer";
    EXPECT_EQ(copies(rows(1048577, 3)), 3U) << "a row that the buffer grows for";
    EXPECT_EQ(copies(rows(524289, 3)), 3U);

    const HostImage channels(VoxelTypes::uint8, {10, 10, 1, 1, 2});
    const ImageModelSizeProxy one(&channels, 0, 10, 0, 10, 0, 1, 0, 1, 0, 1);
    EXPECT_EQ(copies(one), 1U);
}

TEST(ImageTransferTest, PicksTheIndicesAlongTheFurtherAxes) {
    HostImage image = randomImage<std::uint8_t>({6, 4, 3, 2, 3}, 9);
    DeviceImage<std::uint8_t> device(6, 4, 3, true);
    copyImageToDevice3d(image, device.data(), device.pitch(), device.slicePitch(), 1, 2, nullptr);
    HostImage target(VoxelTypes::uint8, {6, 4, 3});
    copyDeviceToImage3d(device.data(), device.pitch(), device.slicePitch(), target, 0, 0, nullptr);
    const ImageModelSizeProxy expected(&image, 0, 6, 0, 4, 0, 3, 1, 1, 2, 1);
    EXPECT_EQ(readAll<std::uint8_t>(target), readAll<std::uint8_t>(expected));
}

TEST(ImageTransferTest, NamesTheRowThatFails) {
    RowsOnlyImage flat(HostImage(VoxelTypes::uint8, {8, 4}), 2);
    RowsOnlyImage deep(HostImage(VoxelTypes::uint8, {8, 4, 3}), 1);
    DeviceImage<std::uint8_t> device(8, 4, 3, true);
    const auto message = [](const auto& action) { return messageOf<RuntimeError>(action); };
    EXPECT_EQ(message([&] { copyImageToDevice2d(flat, device.data(), device.pitch(), 0, 0, nullptr); }),
              "Cannot read a row at the coordinates (0, 2, 0, 0, 0) in the image (8, 4, 1, 1, 1)");
    EXPECT_EQ(message([&] { copyDeviceToImage2d(device.data(), device.pitch(), flat, 0, 0, nullptr); }),
              "Cannot write a row at the coordinates (0, 2, 0, 0, 0) in the image (8, 4, 1, 1, 1)");
    EXPECT_EQ(
        message([&] { copyImageToDevice3d(deep, device.data(), device.pitch(), device.slicePitch(), 0, 0, nullptr); }),
        "Cannot read a row at the coordinates (0, 1, 0, 0, 0) in the image (8, 4, 3, 1, 1)");
    EXPECT_EQ(
        message([&] { copyDeviceToImage3d(device.data(), device.pitch(), device.slicePitch(), deep, 0, 0, nullptr); }),
        "Cannot write a row at the coordinates (0, 1, 0, 0, 0) in the image (8, 4, 3, 1, 1)");
}

TEST(ImageTransferTest, WaitsForItsDataOnStreamsThatRunLate) {
    const host::ScopedTestModes late({.deferredStreams = true, .protectedMemory = true});
    expectRoundTrips<std::uint16_t>({333, 21});
    expectRoundTrips<float>({64, 5, 3});
}
