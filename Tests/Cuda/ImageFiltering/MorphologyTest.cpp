#include <bit>
#include <cmath>
#include <random>

#include "MorphologyRun.h"
#include "PlainFilters.h"
#include "RunChecks.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

template <typename T>
std::vector<T> eroded(const PlainVolume<T>& image, const Window& window) {
    return plainWindowFilter(image, window, [](const auto& seen) { return std::ranges::min(seen); });
}

template <typename T>
std::vector<T> dilated(const PlainVolume<T>& image, const Window& window) {
    return plainWindowFilter(image, window, [](const auto& seen) { return std::ranges::max(seen); });
}

template <typename Algo, typename T>
void expectEverywhereAs(const std::vector<T>& expected, HostImage& image, unsigned radius, bool square) {
    SCOPED_TRACE(Algo::getClassInfo()->className());
    expectEverywhere(expected, std::vector<Vector2<unsigned>>{{0, 0}, {48, 44}, {61, 1}},
                     [&](const Placement& placement) { return MorphologyRun<Algo>(image, radius, square, placement); });
}

/// An image of 73 x 58 pixels by a square when the radius is even, else by a diamond.
template <typename Algo, typename T>
std::vector<T> filtered(std::vector<T> pixels, unsigned radius) {
    HostImage image(voxelTypeOf<T>, {73, 58}, pixels.data());
    return resultOf<T>(MorphologyRun<Algo>(image, radius, radius % 2 == 0, {}));
}

template <typename T>
class MorphologyTest : public ::testing::Test {};

using PixelTypes = decltype(testedTypes(CudaErosion2d::InstanceTypes{}, CudaErosion2d::TypesAsFloat{}));
TYPED_TEST_SUITE(MorphologyTest, PixelTypes);

}  // namespace

TYPED_TEST(MorphologyTest, GivesTheExtremeWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(6);
    for (unsigned radius = 1; radius <= 9; ++radius) {
        for (const bool square : {false, true}) {
            HostImage image = randomImage<T>({1 + random() % 80, 1 + random() % 50}, random());
            const PlainVolume<T> pixels{{image.getDimension(0), image.getDimension(1), 1}, readAll<T>(image)};
            SCOPED_TRACE(testing::Message() << pixels.size[0] << " x " << pixels.size[1] << ", radius " << radius
                                            << ", square " << square);
            // Over the whole neighbourhood at once.
            const Window window = square ? rectangle(2 * radius + 1, 2 * radius + 1) : diamond(radius);
            const PlainVolume<T> low{pixels.size, eroded(pixels, window)}, high{pixels.size, dilated(pixels, window)};
            expectEverywhereAs<CudaErosion2d>(low.voxels, image, radius, square);
            expectEverywhereAs<CudaDilation2d>(high.voxels, image, radius, square);
            expectEverywhereAs<CudaOpening2d>(dilated(low, window), image, radius, square);
            expectEverywhereAs<CudaClosing2d>(eroded(high, window), image, radius, square);
        }
    }
}

TEST(MorphologyLawsTest, OpeningTwiceIsOpeningOnceAndIsTheDualOfClosing) {
    using T = std::uint16_t;
    const std::vector<T> pixels = readAll<T>(randomImage<T>({73, 58}, 3));
    const auto inverted = [](std::vector<T> values) {
        for (T& value : values) value = static_cast<T>(65535 - value);
        return values;
    };
    for (const unsigned radius : {1U, 2U, 5U, 8U, 100U}) {
        SCOPED_TRACE(radius);
        const auto opened = filtered<CudaOpening2d>(pixels, radius);
        EXPECT_EQ(inverted(filtered<CudaClosing2d>(inverted(pixels), radius)), opened);
        EXPECT_EQ(filtered<CudaOpening2d>(opened, radius), opened);
    }
}

TEST(MorphologyFloatTest, TilesDoNotChangeABitOfZerosAndNaNs) {
    HostImage image = randomImage<float>({70, 64}, 4);
    float* const pixels = voxels<float>(image);
    for (int i = 0; i < 70 * 64; ++i) {
        pixels[i] = i % 3 == 0 ? 0.0f : i % 5 == 0 ? -0.0f : i % 7 == 0 ? std::nanf("") : std::abs(pixels[i]);
    }
    const auto bits = [&](const Placement& placement) {
        std::vector<std::uint32_t> result;
        for (const float value : resultOf<float>(MorphologyRun<CudaOpening2d>(image, 3, false, placement))) {
            result.push_back(std::bit_cast<std::uint32_t>(value));
        }
        return result;
    };
    EXPECT_EQ(bits({false, true, {29, 41}}), bits({}));
}
