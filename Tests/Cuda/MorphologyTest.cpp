#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

#include "MorphologyRun.h"
#include "TestImages.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// The extreme over the whole neighbourhood at once, the image's edge repeated.
template <typename T>
std::vector<T> plain(const std::vector<T>& image, const ImageSize& size, unsigned radius, bool square, bool dilate) {
    const auto width = static_cast<long>(size.x), height = static_cast<long>(size.y), r = static_cast<long>(radius);
    std::vector<T> result;
    for (long y = 0; y < height; ++y) {
        for (long x = 0; x < width; ++x) {
            T best = image[static_cast<std::size_t>(y * width + x)];
            for (long dy = -r; dy <= r; ++dy) {
                const long reach = square ? r : r - std::abs(dy);
                for (long dx = -reach; dx <= reach; ++dx) {
                    const long at = std::clamp(y + dy, 0L, height - 1) * width + std::clamp(x + dx, 0L, width - 1);
                    const T pixel = image[static_cast<std::size_t>(at)];
                    best = dilate ? std::max(best, pixel) : std::min(best, pixel);
                }
            }
            result.push_back(best);
        }
    }
    return result;
}

/// The operations of an algorithm: erosion is false, dilation true.
template <typename Algo>
std::vector<bool> operations() {
    if constexpr (std::is_same_v<Algo, CudaErosion2d>) return {false};
    if constexpr (std::is_same_v<Algo, CudaDilation2d>) return {true};
    if constexpr (std::is_same_v<Algo, CudaOpening2d>) return {false, true};
    if constexpr (std::is_same_v<Algo, CudaClosing2d>) return {true, false};
}

template <typename Algo, typename T>
void expectPlain(HostImage& image, unsigned radius, bool square, const std::vector<Placement>& placements) {
    const ImageSize size{image.getDimension(0), image.getDimension(1)};
    std::vector<T> expected = readAll<T>(image);
    for (const bool dilate : operations<Algo>()) expected = plain(expected, size, radius, square, dilate);
    for (const Placement& placement : placements) {
        SCOPED_TRACE(testing::Message() << Algo::getClassInfo()->className() << ", tile " << placement.tile.x << " x "
                                        << placement.tile.y << ", device " << placement.inputOnDevice
                                        << placement.outputOnDevice);
        MorphologyRun<Algo> run(image, radius, square, placement);
        run.filter.run();
        ASSERT_EQ(run.template result<T>(), expected);
    }
}

template <typename T>
class Morphology : public ::testing::Test {};

using PixelTypes = ::testing::Types<std::uint8_t, std::uint16_t, std::int8_t, std::int16_t, float>;

constexpr bool bothShapes[] = {false, true};

}  // namespace

TYPED_TEST_SUITE(Morphology, PixelTypes);

TYPED_TEST(Morphology, GivesTheExtremeWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(6);
    for (unsigned radius = 1; radius <= 9; ++radius) {
        for (const bool square : bothShapes) {
            const ImageSize size{1 + random() % 80, 1 + random() % 50};
            SCOPED_TRACE(testing::Message()
                         << size.x << " x " << size.y << ", radius " << radius << ", square " << square);
            HostImage image = randomImage<T>(size, random());
            std::vector<Placement> placements;
            for (const Vector2<unsigned> tile : {Vector2<unsigned>{0, 0}, {48, 44}, {61, 1}}) {
                for (const Placement& placement : allPlacements(tile)) placements.push_back(placement);
            }
            expectPlain<CudaErosion2d, T>(image, radius, square, placements);
            expectPlain<CudaDilation2d, T>(image, radius, square, placements);
            expectPlain<CudaOpening2d, T>(image, radius, square, placements);
            expectPlain<CudaClosing2d, T>(image, radius, square, placements);
        }
    }
}

// Diamond of radius 2 around one bright pixel, next to the corner: the edge repeats in every pass.
TEST(MorphologyShape, OfNeighborhoodZeroIsADiamond) {
    std::uint8_t pixels[5 * 4] = {};
    pixels[1 * 5 + 1] = 9;
    HostImage image(VoxelTypes::uint8, {5, 4}, pixels);
    EXPECT_EQ((morphology<CudaDilation2d, std::uint8_t>(image, 2, false)), (std::vector<std::uint8_t>{9, 9, 9, 0, 0,  //
                                                                                                      9, 9, 9, 9, 0,  //
                                                                                                      9, 9, 9, 0, 0,  //
                                                                                                      0, 9, 0, 0, 0}));
    EXPECT_EQ((morphology<CudaDilation2d, std::uint8_t>(image, 2, true)), (std::vector<std::uint8_t>{9, 9, 9, 9, 0,  //
                                                                                                     9, 9, 9, 9, 0,  //
                                                                                                     9, 9, 9, 9, 0,  //
                                                                                                     9, 9, 9, 9, 0}));
}

TEST(MorphologyLaws, HoldForEveryRadiusAndShape) {
    using T = std::uint16_t;
    HostImage image = randomImage<T>({73, 58}, 3);
    const std::vector<T> pixels = readAll<T>(image);
    const auto inverted = [](std::vector<T> values) {
        for (T& value : values) value = static_cast<T>(65535 - value);
        return values;
    };
    std::vector<T> invertedPixels = inverted(pixels);
    HostImage invertedImage(VoxelTypes::uint16, {73, 58}, invertedPixels.data());
    const auto noneAbove = [](const std::vector<T>& low, const std::vector<T>& high) {
        return std::equal(low.begin(), low.end(), high.begin(), high.end(), std::less_equal<>());
    };
    for (const bool square : bothShapes) {
        for (const unsigned radius : {1U, 2U, 5U, 8U, 100U}) {
            SCOPED_TRACE(testing::Message() << "radius " << radius << ", square " << square);
            EXPECT_EQ((morphology<CudaErosion2d, T>(invertedImage, radius, square)),
                      inverted(morphology<CudaDilation2d, T>(image, radius, square)));

            std::vector<T> opened = morphology<CudaOpening2d, T>(image, radius, square);
            std::vector<T> closed = morphology<CudaClosing2d, T>(image, radius, square);
            EXPECT_TRUE(noneAbove(opened, pixels));
            EXPECT_TRUE(noneAbove(pixels, closed));
            HostImage openedImage(VoxelTypes::uint16, {73, 58}, opened.data());
            HostImage closedImage(VoxelTypes::uint16, {73, 58}, closed.data());
            EXPECT_EQ((morphology<CudaOpening2d, T>(openedImage, radius, square)), opened);
            EXPECT_EQ((morphology<CudaClosing2d, T>(closedImage, radius, square)), closed);
        }
    }
}

TEST(MorphologyFloat, TilesDoNotChangeABitOfZerosAndNaNs) {
    HostImage image = randomImage<float>({70, 64}, 4);
    float* const pixels = voxels<float>(image);
    for (int i = 0; i < 70 * 64; ++i) {
        pixels[i] = i % 3 == 0 ? 0.0f : i % 5 == 0 ? -0.0f : i % 7 == 0 ? std::nanf("") : std::abs(pixels[i]);
    }
    const auto bits = [&](const Placement& placement) {
        MorphologyRun<CudaOpening2d> run(image, 3, false, placement);
        run.filter.run();
        std::vector<std::uint32_t> result(70 * 64);
        std::memcpy(result.data(), run.result<float>().data(), result.size() * sizeof(float));
        return result;
    };
    EXPECT_EQ(bits({false, true, {29, 41}}), bits({}));
}

TEST(MorphologySteps, FollowTheirFormula) {
    HostImage image = randomImage<std::uint8_t>({100, 60}, 2);
    const auto steps = [&]<typename Algo>(Algo*, const Placement& placement) {
        MorphologyRun<Algo> run(image, 2, true, placement);
        StepWatch watch;
        run.filter.run(&watch);
        EXPECT_EQ(watch.steps(), watch.total());
        return watch.total();
    };
    CudaErosion2d* const erosion = nullptr;
    CudaOpening2d* const opening = nullptr;
    EXPECT_EQ(steps(erosion, {false, false}), 3U);
    EXPECT_EQ(steps(opening, {true, true}), 1U);
    // Margins of 2 leave 36 of a tile's 40 pixels, those of an opening, 4, leave 32: 3 x 2 and 3 x 2 blocks. Of tiles
    // of 38 an opening needs 4 x 2, an erosion 3 x 2.
    EXPECT_EQ(steps(erosion, {false, false, {40, 40}}), 3U * 6);
    EXPECT_EQ(steps(opening, {true, true, {40, 40}}), 2U * 6);
    EXPECT_EQ(steps(erosion, {true, false, {36, 40}}), 2U * 6);
    EXPECT_EQ(steps(opening, {true, false, {36, 40}}), 2U * 8);
}
