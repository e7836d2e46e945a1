#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "MorphologyRun.h"
#include "RunChecks.h"

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
void expectPlain(HostImage& image, unsigned radius, bool square) {
    const ImageSize size{image.getDimension(0), image.getDimension(1)};
    SCOPED_TRACE(testing::Message() << Algo::getClassInfo()->className() << ", " << size.x << " x " << size.y
                                    << ", radius " << radius << ", square " << square);
    std::vector<T> expected = readAll<T>(image);
    for (const bool dilate : operations<Algo>()) expected = plain(expected, size, radius, square, dilate);
    const std::vector<Vector2<unsigned>> tiles{{0, 0}, {48, 44}, {61, 1}};
    expectEverywhere(expected, tiles,
                     [&](const Placement& placement) { return MorphologyRun<Algo>(image, radius, square, placement); });
}

template <typename T>
class MorphologyTest : public ::testing::Test {};

using PixelTypes = decltype(testedTypes(cuda::CudaErosion2d::InstanceTypes{}, cuda::CudaErosion2d::TypesAsFloat{}));

}  // namespace

TYPED_TEST_SUITE(MorphologyTest, PixelTypes);

TYPED_TEST(MorphologyTest, GivesTheExtremeWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(6);
    for (unsigned radius = 1; radius <= 9; ++radius) {
        for (const bool square : {false, true}) {
            const ImageSize size{1 + random() % 80, 1 + random() % 50};
            HostImage image = randomImage<T>(size, random());
            expectPlain<CudaErosion2d, T>(image, radius, square);
            expectPlain<CudaDilation2d, T>(image, radius, square);
            expectPlain<CudaOpening2d, T>(image, radius, square);
            expectPlain<CudaClosing2d, T>(image, radius, square);
        }
    }
}

TEST(MorphologyLawsTest, OpeningTwiceIsOpeningOnceAndIsTheDualOfClosing) {
    using T = std::uint16_t;
    HostImage image = randomImage<T>({73, 58}, 3);
    std::vector<T> pixels = readAll<T>(image);
    const auto invert = [](std::vector<T>& values) {
        for (T& value : values) value = static_cast<T>(65535 - value);
    };
    invert(pixels);
    HostImage inverted(VoxelTypes::uint16, {73, 58}, pixels.data());
    for (const unsigned radius : {1U, 2U, 5U, 8U, 100U}) {
        SCOPED_TRACE(radius);
        const bool square = radius % 2 == 0;
        std::vector<T> opened = morphology<CudaOpening2d, T>(image, radius, square);
        std::vector<T> closed = morphology<CudaClosing2d, T>(inverted, radius, square);
        invert(closed);
        EXPECT_EQ(closed, opened);
        HostImage openedImage(VoxelTypes::uint16, {73, 58}, opened.data());
        EXPECT_EQ((morphology<CudaOpening2d, T>(openedImage, radius, square)), opened);
    }
}

TEST(MorphologyFloatTest, TilesDoNotChangeABitOfZerosAndNaNs) {
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
