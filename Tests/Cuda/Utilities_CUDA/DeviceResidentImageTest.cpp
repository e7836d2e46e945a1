#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"

#include <cuda_runtime.h>
#include <host_device.h>

#include <new>
#include <stdexcept>
#include <thread>

#include "Messages.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/TarnwayImage.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

using namespace zel;
using namespace zel::cuda;
using tarnway::ElementType;
using tarnway::ImageDimension;
using tarnway_cuda::CudaImageView;
using test::messageOf;
using test::partOf;

namespace {

tarnway::ImageInfoProperty viewInfo(ElementType type, const tarnway::ImageType& axes,
                                    const std::vector<std::size_t>& sizes) {
    tarnway::VectorX<std::size_t> entries(sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i) entries[i] = sizes[i];
    return {type, axes, entries};
}

}  // namespace

TEST(DeviceDataPointerTest, AddsTheOriginsOfAllProxies) {
    const auto view = CudaImageView::allocate(ElementType::float32, 100, 50, 10);
    auto* const first = static_cast<char*>(view->deviceData());
    TarnwayImage image(view);
    ImageModelSizeProxy outer = partOf(image, {10, 20, 3}, {50, 20, 5});
    ImageModelSizeProxy inner = partOf(outer, {5, 7, 2}, {10, 3, 2});
    const std::size_t pitch = view->indexer().byteStride()[1];
    const std::size_t offset = (3 + 2) * 50 * pitch + (20 + 7) * pitch + (10 + 5) * 4;
    for (const auto& [shown, begin] : {std::pair<ImageModel*, std::size_t>{&image, 0}, {&inner, offset}}) {
        std::size_t found = 0, foundConst = 0;
        EXPECT_EQ(deviceDataPointer(shown, found), first + begin);
        EXPECT_EQ(deviceDataPointerConst(shown, foundConst), first + begin);
        EXPECT_EQ(found, pitch);
        EXPECT_EQ(foundConst, pitch);
        EXPECT_EQ(deviceSlicePitch(shown), 50 * pitch) << "of the whole image, not of the part";
        EXPECT_EQ(cudaImageOf(shown), view);
    }
}

// Images and views number their last two dimensions the other way round: axis 3 is time, axis 4 is the channel.
TEST(DeviceDataPointerTest, CrossesTheLastTwoAxes) {
    const auto view = CudaImageView::allocate(
        viewInfo(ElementType::uint8, {ImageDimension::channel, ImageDimension::time}, {8, 4, 3, 2}));
    TarnwayImage image(view);
    EXPECT_EQ(image.getDimension(3), 2U);
    EXPECT_EQ(image.getDimension(4), 3U);
    ImageModelSizeProxy part = partOf(image, {0, 0, 0, 1, 2}, {8, 4});
    std::size_t pitch = 0;
    const auto* const address = static_cast<const char*>(deviceDataPointer(&part, pitch));
    EXPECT_EQ(address, static_cast<char*>(view->deviceData()) + (1 * 3 + 2) * 4 * pitch);

    const std::uint8_t value = 77;
    ASSERT_TRUE(part.writeRow(1, &value, 5, 2, 0, 0, 0));
    std::uint8_t read = 0;
    ASSERT_EQ(cudaMemcpy(&read, address + 2 * pitch + 5, 1, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(read, 77);
}

TEST(DeviceDataPointerTest, IsNullForImagesElsewhere) {
    std::size_t pitch = 5;
    HostImage host(VoxelTypes::uint8, {4, 4});
    EXPECT_EQ(deviceDataPointer(&host, pitch), nullptr);
    EXPECT_EQ(pitch, 0U);
    TarnwayImage empty(nullptr);
    EXPECT_EQ(deviceDataPointerConst(&empty, pitch), nullptr);
    EXPECT_EQ(cudaImageOf(nullptr), nullptr);
}

TEST(CudaImageViewTest, AnswersRowsFromSeveralThreads) {
    constexpr std::size_t width = 300, height = 40, depth = 2;
    TarnwayImage image(CudaImageView::allocate(ElementType::uint16, width, height, depth));
    EXPECT_TRUE(image.isDeviceResident());
    EXPECT_EQ(image.hostDataReadOnly(), nullptr);
    HostImage content = test::randomImage<std::uint16_t>({width, height, depth}, 4);
    const auto copyRows = [&](std::size_t first) {
        for (std::size_t row = first; row < height * depth; row += 2) {
            const auto* const voxels = test::voxels<std::uint16_t>(content) + row * width;
            EXPECT_TRUE(image.writeRow(width, voxels, 0, row % height, row / height, 0, 0));
        }
    };
    std::thread other(copyRows, 1);
    copyRows(0);
    other.join();
    EXPECT_EQ(test::readAll<std::uint16_t>(image), test::readAll<std::uint16_t>(content));
    std::uint16_t pixel = 0;
    EXPECT_FALSE(image.readRow(2, &pixel, width - 1, 0, 0, 0, 0));
    EXPECT_FALSE(image.readRow(1, &pixel, 0, height, 0, 0, 0));
    EXPECT_FALSE(image.readRow(1, &pixel, 0, 0, 0, 1, 0)) << "a dimension that the view lacks";
}

TEST(CudaImageViewTest, FailsRowsQuietlyAndAllocationsLoudly) {
    const std::uint64_t before = host::deviceUse().liveAllocations;
    {
        TarnwayImage image(CudaImageView::allocate(ElementType::uint8, 10, 10));
        char byte = 0;
        host::injectFault({.call = "cudaMemcpy"});
        EXPECT_FALSE(image.readRow(1, &byte, 0, 0, 0, 0, 0));
        EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess) << "told by the result, not a second time by the runtime";
        host::injectFault({.call = "cudaMallocPitch"});
        EXPECT_THROW(CudaImageView::allocate(ElementType::uint8, 10, 10), std::bad_alloc);
        EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
    }
    EXPECT_EQ(host::deviceUse().liveAllocations, before);
}

TEST(CudaImageViewTest, RefusesWhatAKernelCouldNotRead) {
    constexpr std::size_t huge = std::size_t{1} << 61;
    alignas(16) char memory[512];
    const auto info = viewInfo(ElementType::float64, {}, {4, 3});
    const auto wrapped = [&](void* address, std::size_t pitch) {
        return messageOf<std::invalid_argument>([&] { CudaImageView::wrap(info, address, pitch); });
    };
    const auto allocated = [](ElementType type, std::size_t width, std::size_t height, std::size_t depth) {
        return messageOf<std::invalid_argument>([&] { CudaImageView::allocate(type, width, height, depth); });
    };
    for (const std::string& message : {allocated(ElementType::float64, huge, 1, 1), wrapped(memory, 4 * huge),
                                       allocated(ElementType::uint8, 16, std::size_t{1} << 32, std::size_t{1} << 32)}) {
        EXPECT_THAT(message, testing::EndsWith(" has more bytes than this machine can count"));
    }
    EXPECT_THROW(DeviceImage<float>(2 * huge, 1, false), RuntimeError);
    EXPECT_THROW(DeviceImage<float>(std::size_t{1} << 31, std::size_t{1} << 31, 1, false), RuntimeError);

    for (const std::size_t pitch : {0, 24, 36}) {
        EXPECT_EQ(wrapped(memory, pitch), "the row pitch of a view of 4 x 3 elements of 8 bytes is " +
                                              std::to_string(pitch) +
                                              " bytes; it must be a multiple of the element and at least a row");
    }
    EXPECT_EQ(wrapped(memory + 4, 32),
              "the address of a view of 4 x 3 elements of 8 bytes is no multiple of the element");
    EXPECT_NO_THROW(CudaImageView::wrap(info, memory, 32));
}

// Two views of one allocation, a few rows apart: what the first reads the second would have written.
TEST(CudaImageViewTest, IsKnownToShareMemoryByItsRows) {
    alignas(256) char memory[256 * 9];
    const auto info = viewInfo(ElementType::uint8, {}, {100, 4});
    TarnwayImage input(CudaImageView::wrap(info, memory, 256));
    CudaBoxFilter2d filter;
    filter.inputImage = &input;
    for (const auto& [row, shares] : {std::pair{3, true}, {4, false}}) {
        TarnwayImage output(CudaImageView::wrap(info, memory + 256 * row, 256));
        filter.outputImage = &output;
        EXPECT_THAT(messageOf([&] { filter.run(); }),
                    testing::StartsWith(shares ? "outputImage shares memory with inputImage; it must be another image"
                                               : "No runner is available for CudaBoxFilter2d"));
    }
}

TEST(CudaImageViewTest, ShowsMemoryOfTheCaller) {
    void* memory = nullptr;
    ASSERT_EQ(cudaMalloc(&memory, 1000), cudaSuccess);
    {
        TarnwayImage image(CudaImageView::wrap(viewInfo(ElementType::uint8, {}, {10, 4}), memory, 100));
        const std::vector<std::uint8_t> row(10, 3);
        EXPECT_TRUE(image.writeRow(10, row.data(), 0, 3, 0, 0, 0));
        std::uint8_t pixel = 0;
        ASSERT_EQ(cudaMemcpy(&pixel, static_cast<char*>(memory) + 309, 1, cudaMemcpyDeviceToHost), cudaSuccess);
        EXPECT_EQ(pixel, 3);
    }
    EXPECT_EQ(cudaFree(memory), cudaSuccess) << "the view must not have freed it";
}
