#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Messages.h"
#include "TestImages.h"
#include "Utilities_CUDA/DeviceImage.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/TarnwayImage.h"
#include "zel/algorithms/CudaBoxFilter2d.h"

using namespace zel;
using namespace zel::cuda;
using tarnway::ElementType;
using tarnway::ImageDimension;
using tarnway_cuda::CudaImageView;

namespace {

std::ptrdiff_t distance(const void* from, const void* to) {
    return static_cast<const char*>(to) - static_cast<const char*>(from);
}

tarnway::VectorX<std::size_t> sizes(std::initializer_list<std::size_t> values) {
    tarnway::VectorX<std::size_t> result(values.size());
    std::size_t i = 0;
    for (const std::size_t value : values) result[i++] = value;
    return result;
}

}  // namespace

TEST(DeviceDataPointerTest, AddsTheOriginsOfAllProxies) {
    const auto view = CudaImageView::allocate(ElementType::float32, 100, 50, 10);
    TarnwayImage image(view);
    std::size_t pitch = 0;
    EXPECT_EQ(deviceDataPointer(&image, pitch), view->deviceData());
    EXPECT_EQ(pitch, view->indexer().byteStride()[1]);

    ImageModelSizeProxy outer(&image, 10, 50, 20, 20, 3, 5, 0, 1, 0, 1);
    ImageModelSizeProxy inner(&outer, 5, 10, 7, 3, 2, 2, 0, 1, 0, 1);
    const auto expected = static_cast<std::ptrdiff_t>((3 + 2) * 50 * pitch + (20 + 7) * pitch + (10 + 5) * 4);
    std::size_t innerPitch = 0;
    EXPECT_EQ(distance(view->deviceData(), deviceDataPointer(&inner, innerPitch)), expected);
    EXPECT_EQ(innerPitch, pitch);
    EXPECT_EQ(deviceSlicePitch(&inner), 50 * pitch) << "of the whole image, not of the part";
    EXPECT_EQ(distance(view->deviceData(), deviceDataPointerConst(&inner, innerPitch)), expected);
    EXPECT_EQ(cudaImageOf(&inner), cudaImageOf(&image));
}

// Images and views number their last two dimensions the other way round: axis 3 is time, axis 4 is the channel.
TEST(DeviceDataPointerTest, CrossesTheLastTwoAxes) {
    const tarnway::ImageInfoProperty info(
        ElementType::uint8, tarnway::ImageType{ImageDimension::channel, ImageDimension::time}, sizes({8, 4, 3, 2}));
    const auto view = CudaImageView::allocate(info);
    TarnwayImage image(view);
    EXPECT_EQ(image.getDimension(3), 2U);
    EXPECT_EQ(image.getDimension(4), 3U);
    ImageModelSizeProxy part(&image, 0, 8, 0, 4, 0, 1, 1, 1, 2, 1);
    std::size_t pitch = 0;
    const auto expected = static_cast<std::ptrdiff_t>((1 * 3 + 2) * 4 * view->indexer().byteStride()[1]);
    EXPECT_EQ(distance(view->deviceData(), deviceDataPointer(&part, pitch)), expected);

    const std::uint8_t value = 77;
    ASSERT_TRUE(part.writeRow(1, &value, 5, 2, 0, 0, 0));
    std::uint8_t read = 0;
    const auto* const address = static_cast<const char*>(view->deviceData()) + expected + 2 * pitch + 5;
    ASSERT_EQ(cudaMemcpy(&read, address, 1, cudaMemcpyDeviceToHost), cudaSuccess);
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
    constexpr std::size_t width = 300, height = 40;
    TarnwayImage image(CudaImageView::allocate(ElementType::uint16, width, height));
    EXPECT_TRUE(image.isDeviceResident());
    EXPECT_EQ(image.hostDataReadOnly(), nullptr);
    HostImage content = test::randomImage<std::uint16_t>({width, height}, 4);
    const auto copyRows = [&](std::size_t first) {
        for (std::size_t y = first; y < height; y += 2) {
            EXPECT_TRUE(image.writeRow(width, test::voxels<std::uint16_t>(content) + y * width, 0, y, 0, 0, 0));
        }
    };
    std::thread other(copyRows, 1);
    copyRows(0);
    other.join();
    EXPECT_EQ(test::readAll<std::uint16_t>(image), test::readAll<std::uint16_t>(content));
    std::uint16_t pixel = 0;
    EXPECT_FALSE(image.readRow(2, &pixel, width - 1, 0, 0, 0, 0));
    EXPECT_FALSE(image.readRow(1, &pixel, 0, 0, 1, 0, 0)) << "a dimension that the view lacks";
}

TEST(CudaImageViewTest, FailsRowsQuietlyAndAllocationsLoudly) {
    TarnwayImage image(CudaImageView::allocate(ElementType::uint8, 10, 10));
    char byte = 0;
    host::injectFault({.call = "cudaMemcpy"});
    EXPECT_FALSE(image.readRow(1, &byte, 0, 0, 0, 0, 0));
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess) << "told by the result, not a second time by the runtime";
    host::injectFault({.call = "cudaMallocPitch"});
    EXPECT_THROW(CudaImageView::allocate(ElementType::uint8, 10, 10), std::bad_alloc);
    EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
}

TEST(CudaImageViewTest, RefusesWhatAKernelCouldNotRead) {
    const auto message = [](const auto& action) {
        try {
            action();
        } catch (const std::invalid_argument& error) {
            return std::string(error.what());
        }
        return std::string("(nothing was thrown)");
    };
    const std::string uncountable = " has more bytes than this machine can count";
    EXPECT_THAT(message([] { CudaImageView::allocate(ElementType::float64, std::size_t{1} << 61, 1); }),
                testing::EndsWith(uncountable));
    EXPECT_THAT(message([] { CudaImageView::allocate(ElementType::uint8, 16, std::size_t{1} << 32, 1ULL << 32); }),
                testing::EndsWith(uncountable));
    EXPECT_THROW(DeviceImage<float>(std::size_t{1} << 62, 1, false), RuntimeError);
    EXPECT_THROW(DeviceImage<float>(std::size_t{1} << 31, std::size_t{1} << 31, 1, false), RuntimeError);

    alignas(16) char memory[512];
    const tarnway::ImageInfoProperty info(ElementType::float64, tarnway::ImageType{}, sizes({4, 3}));
    for (const std::size_t pitch : {0, 24, 36}) {
        EXPECT_EQ(message([&] { CudaImageView::wrap(info, memory, pitch); }),
                  "the row pitch of a view of 4 x 3 elements of 8 bytes is " + std::to_string(pitch) +
                      " bytes; it must be a multiple of the element and at least a row");
    }
    EXPECT_EQ(message([&] { CudaImageView::wrap(info, memory + 4, 32); }),
              "the address of a view of 4 x 3 elements of 8 bytes is no multiple of the element");
    EXPECT_THAT(message([&] { CudaImageView::wrap(info, memory, std::size_t{1} << 63); }),
                testing::EndsWith(uncountable));
    EXPECT_NO_THROW(CudaImageView::wrap(info, memory, 32));
}

// Two views of one allocation, a few rows apart: what the first reads the second would have written.
TEST(CudaImageViewTest, IsKnownToShareMemoryByItsRows) {
    alignas(256) char memory[256 * 9];
    const tarnway::ImageInfoProperty info(ElementType::uint8, tarnway::ImageType{}, sizes({100, 4}));
    TarnwayImage input(CudaImageView::wrap(info, memory, 256));
    CudaBoxFilter2d filter;
    filter.inputImage = &input;
    for (const auto& [row, shares] : {std::pair{3, true}, {4, false}}) {
        TarnwayImage output(CudaImageView::wrap(info, memory + 256 * row, 256));
        filter.outputImage = &output;
        EXPECT_EQ(test::messageOf<RuntimeError>([&] { filter.run(); }),
                  shares ? "outputImage shares memory with inputImage; it must be another image"
                         : "No runner is available for CudaBoxFilter2d");
    }
}

TEST(CudaImageViewTest, ShowsMemoryOfTheCaller) {
    void* memory = nullptr;
    ASSERT_EQ(cudaMalloc(&memory, 1000), cudaSuccess);
    {
        TarnwayImage image(
            CudaImageView::wrap({ElementType::uint8, tarnway::ImageType{}, sizes({10, 4})}, memory, 100));
        const std::vector<std::uint8_t> row(10, 3);
        EXPECT_TRUE(image.writeRow(10, row.data(), 0, 3, 0, 0, 0));
        std::uint8_t pixel = 0;
        ASSERT_EQ(cudaMemcpy(&pixel, static_cast<char*>(memory) + 309, 1, cudaMemcpyDeviceToHost), cudaSuccess);
        EXPECT_EQ(pixel, 3);
    }
    EXPECT_EQ(cudaFree(memory), cudaSuccess) << "the view must not have freed it";
}
