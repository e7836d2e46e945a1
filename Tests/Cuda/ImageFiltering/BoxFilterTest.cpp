#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "BoxFilterRun.h"
#include "RunChecks.h"

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
class BoxFilterTest : public ::testing::Test {};

using PixelTypes = decltype(testedTypes(cuda::CudaBoxFilter2d::InstanceTypes{}, cuda::CudaBoxFilter2d::TypesAsFloat{}));

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

TYPED_TEST_SUITE(BoxFilterTest, PixelTypes);

TYPED_TEST(BoxFilterTest, GivesTheMeanWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(20);
    for (int repeat = 0; repeat < 12; ++repeat) {
        const ImageSize size{1 + random() % 90, 1 + random() % 60};
        const unsigned kernelX = repeat == 0 ? 1 : 1 + random() % 13, kernelY = repeat == 0 ? 1 : 1 + random() % 9;
        HostImage image = randomImage<T>(size, random());
        const std::vector<double> means = plainMeans<T>(image, kernelX, kernelY);
        SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << ", kernel " << kernelX << " x " << kernelY);
        const auto makeRun = [&](const Placement& placement) {
            return BoxFilterRun(image, kernelX, kernelY, placement);
        };
        BoxFilterRun whole = makeRun({});
        whole.filter.run();
        expectMeans(whole.result<T>(), means);
        std::vector<Vector2<unsigned>> tiles{{0, 0}, {40, 17}, {33, 64}};
        if (size.x * size.y < 600) tiles.push_back({1, 1});  // a tile for each pixel
        expectEverywhere(whole.result<T>(), tiles, makeRun);
    }
}

// Without margins to cut off, a tile's result goes straight into an output on the device.
TEST(BoxFilterStepsTest, AreFewerWithoutMargins) {
    HostImage image = randomImage<std::uint8_t>({100, 60}, 2);
    const auto steps = [&](unsigned kernel, const Placement& placement) {
        return stepsOf(BoxFilterRun(image, kernel, kernel, placement));
    };
    EXPECT_EQ(steps(1, {true, true, {40, 40}}), 1U * 6);
    EXPECT_EQ(steps(1, {false, false, {40, 40}}), 3U * 6);
    EXPECT_EQ(steps(5, {true, true, {100, 60}}), 1U) << "one block";
}

// Sums of the largest rectangles that float32 still counts one by one. A single pixel keeps the mean above -128.
TEST(BoxFilterInt8Test, IsExactUpTo131072Pixels) {
    HostImage image(VoxelTypes::int8, {600, 400});
    auto* const pixels = static_cast<std::int8_t*>(image.data());
    std::fill_n(pixels, 600 * 400, std::int8_t{-128});
    pixels[200 * 600 + 300] = -127;
    for (const auto& [kernelX, kernelY] : {std::pair(362U, 362U), std::pair(512U, 256U)}) {
        BoxFilterRun run(image, kernelX, kernelY, {});
        run.filter.run();
        const std::vector<std::int8_t> result = run.result<std::int8_t>();
        EXPECT_EQ(result[200 * 600 + 300], -127) << kernelX << " x " << kernelY;
        EXPECT_EQ(result[0], -128) << kernelX << " x " << kernelY;
    }
}
