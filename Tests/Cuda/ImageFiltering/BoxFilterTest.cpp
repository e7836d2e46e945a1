#include <numeric>

#include "BoxFilterRun.h"
#include "PlainFilters.h"
#include "RunChecks.h"

using namespace zel;
using namespace zel::test;

namespace {

/// Means as sums of long doubles, exact for integers, which truncate them.
template <typename T>
std::vector<T> plainMeans(const HostImage& image, unsigned kernelX, unsigned kernelY) {
    const PlainVolume<T> pixels{{image.getDimension(0), image.getDimension(1), 1}, readAll<T>(image)};
    return plainWindowFilter(pixels, rectangle(kernelX, kernelY), [](const std::vector<T>& seen) {
        return std::accumulate(seen.begin(), seen.end(), 0.0L) / static_cast<long double>(seen.size());
    });
}

template <typename T>
class BoxFilterTest : public ::testing::Test {};

using PixelTypes = decltype(testedTypes(cuda::CudaBoxFilter2d::InstanceTypes{}, cuda::CudaBoxFilter2d::TypesAsFloat{}));
TYPED_TEST_SUITE(BoxFilterTest, PixelTypes);

}  // namespace

TYPED_TEST(BoxFilterTest, GivesTheMeanWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(20);
    for (int repeat = 0; repeat < 12; ++repeat) {
        const ImageSize size{1 + random() % 90, 1 + random() % 60};
        const unsigned kernelX = repeat == 0 ? 1 : 1 + random() % 13, kernelY = repeat == 0 ? 1 : 1 + random() % 9;
        SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << ", kernel " << kernelX << " x " << kernelY);
        HostImage image = randomImage<T>(size, random());
        const auto makeRun = [&](const Placement& placement) {
            return BoxFilterRun(image, kernelX, kernelY, placement);
        };
        const std::vector<T> whole = resultOf<T>(makeRun({})), means = plainMeans<T>(image, kernelX, kernelY);
        // Floats are some hundreds at most; rounding of a few dozen sums stays far below this.
        const double tolerance = std::is_floating_point_v<T> ? 1e-3 : 0;
        for (std::size_t i = 0; i < means.size(); ++i) ASSERT_NEAR(whole[i], means[i], tolerance) << "pixel " << i;

        std::vector<Vector2<unsigned>> tiles{{0, 0}, {40, 17}, {33, 64}};
        if (size.x * size.y < 600) tiles.push_back({1, 1});  // a tile for each pixel
        expectEverywhere(whole, tiles, makeRun);
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
    std::vector<std::int8_t> pixels(600 * 400, -128);
    pixels[200 * 600 + 300] = -127;
    HostImage image(VoxelTypes::int8, {600, 400}, pixels.data());
    for (const auto& [kernelX, kernelY] : {std::pair(362U, 362U), std::pair(512U, 256U)}) {
        const auto result = resultOf<std::int8_t>(BoxFilterRun(image, kernelX, kernelY, {}));
        EXPECT_EQ(result[200 * 600 + 300], -127) << kernelX << " x " << kernelY;
        EXPECT_EQ(result[0], -128) << kernelX << " x " << kernelY;
    }
}
