#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "BoxFilterRun.h"
#include "TestImages.h"
#include "zel/Exceptions.h"
#include "zel/ImageModelSizeProxy.h"

using namespace zel;
using namespace zel::test;

namespace {

/// Mean over the window, edge pixels repeated, as a sum of long doubles: exact for integers.
template <typename T>
std::vector<double> plainMeans(const HostImage& image, unsigned kernelX, unsigned kernelY) {
    const auto width = static_cast<long>(image.getDimension(0));
    const auto height = static_cast<long>(image.getDimension(1));
    const auto* const pixels = static_cast<const T*>(image.data());
    std::vector<double> means;
    for (long y = 0; y < height; ++y) {
        for (long x = 0; x < width; ++x) {
            long double sum = 0;
            for (long j = 0; j < static_cast<long>(kernelY); ++j) {
                for (long i = 0; i < static_cast<long>(kernelX); ++i) {
                    const long sx = std::clamp(x - static_cast<long>(kernelX / 2) + i, 0L, width - 1);
                    const long sy = std::clamp(y - static_cast<long>(kernelY / 2) + j, 0L, height - 1);
                    sum += pixels[sy * width + sx];
                }
            }
            means.push_back(static_cast<double>(sum / (static_cast<long double>(kernelX) * kernelY)));
        }
    }
    return means;
}

template <typename T>
class BoxFilter : public ::testing::Test {};

using PixelTypes = ::testing::Types<std::uint8_t, std::uint16_t, std::int16_t, std::int8_t, float>;

template <typename T>
void expectMeans(const std::vector<T>& result, const std::vector<double>& means) {
    ASSERT_EQ(result.size(), means.size());
    for (std::size_t i = 0; i < means.size(); ++i) {
        if constexpr (std::is_floating_point_v<T>) {
            // Pixels are around 100; rounding of a few dozen sums stays far below this.
            ASSERT_NEAR(result[i], means[i], 1e-3) << "pixel " << i;
        } else {
            ASSERT_EQ(result[i], static_cast<T>(std::trunc(means[i]))) << "pixel " << i;
        }
    }
}

}  // namespace

TYPED_TEST_SUITE(BoxFilter, PixelTypes);

TYPED_TEST(BoxFilter, GivesTheMeanWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(20);
    for (int repeat = 0; repeat < 12; ++repeat) {
        const ImageSize size{1 + random() % 90, 1 + random() % 60};
        const unsigned kernelX = 1 + random() % 13, kernelY = 1 + random() % 9;
        HostImage image = randomImage<T>(size, random());
        const std::vector<double> means = plainMeans<T>(image, kernelX, kernelY);
        std::vector<T> whole;
        for (const Vector2<unsigned> tile : {Vector2<unsigned>{0, 0}, {40, 17}, {33, 64}, {1, 1}}) {
            if (tile.x == 1 && size.x * size.y > 600) continue;  // a tile for each pixel
            for (const Placement& placement : allPlacements(tile)) {
                SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << ", kernel " << kernelX << " x "
                                                << kernelY << ", tile " << tile.x << " x " << tile.y << ", device "
                                                << placement.inputOnDevice << placement.outputOnDevice);
                BoxFilterRun run(image, kernelX, kernelY, placement);
                run.filter.run();
                const std::vector<T> result = run.result<T>();
                if (whole.empty()) {
                    expectMeans(result, means);
                    whole = result;
                }
                ASSERT_EQ(result, whole) << "tiles must not change a bit";
            }
        }
    }
}

TYPED_TEST(BoxFilter, OfOneByOneCopiesTheImage) {
    HostImage image = randomImage<TypeParam>({50, 20}, 1);
    BoxFilterRun run(image, 1, 1, {});
    run.filter.run();
    EXPECT_EQ(run.result<TypeParam>(), readAll<TypeParam>(image));
}

// 4 pixels cover two before and one after the centre.
TEST(BoxFilterKernel, OfEvenSizeReachesFurtherBack) {
    float pixels[] = {0, 0, 0, 8, 0, 0, 0};
    HostImage image(VoxelTypes::float32, {7}, pixels);
    BoxFilterRun run(image, 4, 1, {});
    run.filter.run();
    EXPECT_EQ(run.result<float>(), (std::vector<float>{0, 0, 2, 2, 2, 2, 0}));
}

TEST(BoxFilterSteps, FollowTheirFormula) {
    HostImage image = randomImage<std::uint8_t>({100, 60}, 2);
    const auto steps = [&](const Placement& placement, unsigned kernel) {
        BoxFilterRun run(image, kernel, kernel, placement);
        StepWatch watch;
        run.filter.run(&watch);
        EXPECT_EQ(watch.steps(), watch.total());
        return watch.total();
    };
    // 100 x 60 in tiles of 40 x 40: with margins of 2 the cores are 36 wide, so 3 x 2 blocks; without, 3 x 2 as well.
    const Vector2<unsigned> tile{40, 40};
    for (const unsigned kernel : {1U, 5U}) {
        EXPECT_EQ(steps({false, false}, kernel), 3U);
        EXPECT_EQ(steps({true, false}, kernel), 2U);
        EXPECT_EQ(steps({false, true}, kernel), 2U);
        EXPECT_EQ(steps({true, true}, kernel), 1U);
        EXPECT_EQ(steps({false, false, tile}, kernel), 3U * 6);
        EXPECT_EQ(steps({true, false, tile}, kernel), 2U * 6);
        EXPECT_EQ(steps({false, true, tile}, kernel), (kernel == 1 ? 2U : 3U) * 6);
        EXPECT_EQ(steps({true, true, tile}, kernel), (kernel == 1 ? 1U : 2U) * 6);
    }
    // A tile as large as the image gives one block, which has no margins to cut off.
    EXPECT_EQ(steps({true, true, {100, 60}}, 5), 1U);
}

TEST(BoxFilterMemory, HoldsTwoBuffersAndOnlyWhatItNeeds) {
    HostImage image = randomImage<std::uint8_t>({512, 300}, 2);
    const auto peak = [&](const Placement& placement, unsigned kernel) {
        BoxFilterRun run(image, kernel, kernel, placement);
        const std::uint64_t before = host::deviceUse().liveBytes;
        host::resetPeakBytes();
        run.filter.run();
        EXPECT_EQ(host::deviceUse().liveBytes, before);
        return host::deviceUse().peakBytes - before;
    };
    EXPECT_EQ(peak({false, false}, 5), 2U * 512 * 300);
    EXPECT_EQ(peak({true, false}, 5), 512U * 300);
    EXPECT_EQ(peak({true, true}, 5), 0U);
    EXPECT_LE(peak({false, false, {256, 100}}, 5), 2U * 256 * 100);
}

TEST(BoxFilterStream, OfTheCallerIsUsedAndKept) {
    HostImage image = randomImage<std::uint16_t>({64, 64}, 3);
    BoxFilterRun run(image, 3, 3, {});
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    CudaContext context{0, stream};
    run.filter.cudaContext = &context;
    const std::uint64_t before = host::callCount("cudaStreamCreate");
    run.filter.run();
    StepWatch cancelled(&run.filter, 1);
    EXPECT_THROW(run.filter.run(&cancelled), ExceptionCancelation);
    EXPECT_EQ(host::callCount("cudaStreamCreate"), before);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

// Many images of one run: rows only, rows with gaps, parts of parts.
TEST(BoxFilterImages, MayBeOfAnyKind) {
    HostImage image = randomImage<float>({70, 45}, 6);
    BoxFilterRun plain(image, 7, 5, {});
    plain.filter.run();
    const std::vector<float> expected = plain.result<float>();

    std::vector<float> memory(90 * 45 + 200);
    HostImage withGaps(VoxelTypes::float32, {70, 45}, memory.data(), 90 * sizeof(float));
    RowsOnlyImage rows(HostImage(VoxelTypes::float32, {70, 45}));
    HostImage large(VoxelTypes::float32, {100, 100});
    ImageModelSizeProxy outer(&large, 5, 90, 5, 90, 0, 1, 0, 1, 0, 1);
    ImageModelSizeProxy part(&outer, 11, 70, 13, 45, 0, 1, 0, 1, 0, 1);
    const std::unique_ptr<ImageModel> deviceLarge = onDevice(large);
    ImageModelSizeProxy devicePart(deviceLarge.get(), 11, 70, 13, 45, 0, 1, 0, 1, 0, 1);
    ImageModel* const all[] = {&withGaps, &rows, &part, &devicePart};
    for (ImageModel* source : all) {
        for (std::size_t y = 0; y < 45; ++y) {
            source->writeRow(70, voxels<float>(image) + y * 70, 0, y, 0, 0, 0);
        }
    }
    for (ImageModel* source : all) {
        for (const unsigned tile : {0U, 32U}) {
            for (ImageModel* target : all) {
                if (target == source) continue;
                cuda::CudaBoxFilter2d filter;
                filter.inputImage = source;
                filter.outputImage = target;
                filter.kernelSizeX = 7;
                filter.kernelSizeY = 5;
                filter.tilingMode = tile == 0 ? 0 : 1;
                filter.tileSize = {tile, tile};
                filter.run();
                EXPECT_EQ(readAll<float>(*target), expected);
                for (std::size_t y = 0; y < 45; ++y) {
                    target->writeRow(70, voxels<float>(image) + y * 70, 0, y, 0, 0, 0);
                }
            }
        }
    }
}
