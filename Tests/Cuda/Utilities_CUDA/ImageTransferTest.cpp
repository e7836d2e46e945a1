#include "Utilities_CUDA/ImageTransfer_CUDA.h"

#include <host_device.h>

#include "Messages.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceImage.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// A device buffer for an image; its slices lie three rows further apart than they need to.
struct Buffer {
    Buffer(const ImageModel& image, bool in3d)
        : as3d(in3d),
          memory(image.getDimension(0) * helper::getSizeOf(image.getDataType()), image.getDimension(1) + 3,
                 image.getDimension(2), true) {}

    void upload(const ImageModel& image, std::size_t i3 = 0, std::size_t i4 = 0) {
        if (as3d) {
            copyImageToDevice3d(image, memory.data(), memory.pitch(), memory.slicePitch(), i3, i4, nullptr);
        } else {
            copyImageToDevice2d(image, memory.data(), memory.pitch(), i3, i4, nullptr);
        }
    }
    void download(ImageModel& image) const {
        if (as3d) {
            copyDeviceToImage3d(memory.data(), memory.pitch(), memory.slicePitch(), image, 0, 0, nullptr);
        } else {
            copyDeviceToImage2d(memory.data(), memory.pitch(), image, 0, 0, nullptr);
        }
    }

    bool as3d;
    DeviceImage<std::uint8_t> memory;
};

RowsOnlyImage emptyRows(const ImageSize& size, std::optional<std::size_t> failingRow = {}) {
    return RowsOnlyImage(HostImage(VoxelTypes::uint8, size), failingRow);
}

template <typename T>
void expectRoundTrips(const ImageSize& size) {
    const HostImage source = randomImage<T>(size, 11);
    const RowsOnlyImage rows(randomImage<T>(size, 11));
    for (const bool as3d : {false, true}) {
        if (!as3d && size.z > 1) continue;
        for (const ImageModel* from : std::initializer_list<const ImageModel*>{&source, &rows}) {
            HostImage direct(voxelTypeOf<T>, size);
            RowsOnlyImage staged(HostImage(voxelTypeOf<T>, size));
            Buffer buffer(source, as3d);
            buffer.upload(*from);
            buffer.download(direct);
            buffer.download(staged);
            EXPECT_EQ(readAll<T>(direct), readAll<T>(source));
            EXPECT_EQ(readAll<T>(staged), readAll<T>(source));
        }
    }
}

}  // namespace

TEST(ImageTransferTest, BringsEveryImageBackAsItWas) {
    expectRoundTrips<std::uint8_t>({1, 1});
    expectRoundTrips<std::int16_t>({300, 7, 4});
    // Rows of a third of the staging buffer, so that chunks of three, three and one go over slice borders.
    expectRoundTrips<float>({87381, 7, 2});
}

TEST(ImageTransferTest, CopiesInOneGoWhatIsContiguousAndInChunksWhatIsNot) {
    const auto copies = [](const ImageModel& image) {
        Buffer buffer(image, false);
        host::resetCallCounts();
        buffer.upload(image);
        EXPECT_EQ(host::callCount("cudaDeviceSynchronize"), host::callCount("cudaMemcpy2DAsync"));
        return host::callCount("cudaMemcpy2DAsync");
    };
    EXPECT_EQ(copies(HostImage(VoxelTypes::uint8, {1000000, 4})), 1U);
    EXPECT_EQ(copies(emptyRows({100, 5})), 1U);
    EXPECT_EQ(copies(emptyRows({500000, 5})), 3U) << "chunks of 2, 2 and 1 rows";
    EXPECT_EQ(copies(emptyRows({1048576, 3})), 3U) << "a row that just fills the buffer";
    EXPECT_EQ(copies(emptyRows({1048577, 3})), 3U) << "a row that the buffer grows for";
    EXPECT_EQ(copies(emptyRows({524289, 3})), 3U);

    const HostImage channels(VoxelTypes::uint8, {10, 10, 1, 1, 2});
    EXPECT_EQ(copies(partOf(channels, {}, {10, 10})), 1U);
}

TEST(ImageTransferTest, PicksTheIndicesAlongTheFurtherAxes) {
    const HostImage image = randomImage<std::uint8_t>({6, 4, 3, 2, 3}, 9);
    Buffer buffer(image, true);
    buffer.upload(image, 1, 2);
    HostImage target(VoxelTypes::uint8, {6, 4, 3});
    buffer.download(target);
    EXPECT_EQ(readAll<std::uint8_t>(target), readAll<std::uint8_t>(partOf(image, {0, 0, 0, 1, 2}, {6, 4, 3})));
}

// Rows of a second chunk too.
TEST(ImageTransferTest, NamesTheRowThatFails) {
    RowsOnlyImage flat = emptyRows({500000, 4}, 2), deep = emptyRows({8, 4, 3}, 1);
    for (const auto& [image, at] : {std::pair{&flat, "(0, 2, 0, 0, 0) in the image (500000, 4, 1, 1, 1)"},
                                    std::pair{&deep, "(0, 1, 0, 0, 0) in the image (8, 4, 3, 1, 1)"}}) {
        Buffer buffer(*image, image == &deep);
        EXPECT_EQ(messageOf([&, image = image] { buffer.upload(*image); }),
                  std::string("Cannot read a row at the coordinates ") + at);
        EXPECT_EQ(messageOf([&, image = image] { buffer.download(*image); }),
                  std::string("Cannot write a row at the coordinates ") + at);
    }
}

TEST(ImageTransferTest, WaitsForItsDataOnStreamsThatRunLate) {
    const host::ScopedTestModes late({.deferredStreams = true, .protectedMemory = true});
    expectRoundTrips<std::uint16_t>({333, 21});
    expectRoundTrips<float>({64, 5, 3});
}
