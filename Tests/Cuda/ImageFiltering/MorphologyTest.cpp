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

template <typename T>
class MorphologyTest : public ::testing::Test {};

using PixelTypes = decltype(testedTypes(CudaErosion2d::InstanceTypes{}, CudaErosion2d::TypesAsFloat{}));
TYPED_TEST_SUITE(MorphologyTest, PixelTypes);

}  // namespace

TYPED_TEST(MorphologyTest, GivesTheExtremeWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(6);
    for (const unsigned radius : {1, 2, 3, 4, 5, 6, 7, 8, 9, 60}) {
        for (const bool square : {false, true}) {
            // The last one reaches over all of its image.
            const ImageSize size = radius < 10 ? ImageSize{1 + random() % 80, 1 + random() % 50} : ImageSize{11, 8};
            SCOPED_TRACE(testing::Message()
                         << size.x << " x " << size.y << ", radius " << radius << ", square " << square);
            HostImage image = randomImage<T>(size, random());
            const PlainVolume<T> pixels{{size.x, size.y, 1}, readAll<T>(image)};
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

TEST(MorphologyFloatTest, TilesDoNotChangeABitOfZerosAndNaNs) {
    HostImage image = randomImage<float>({70, 64}, 4);
    float* const pixels = voxels<float>(image);
    for (int i = 0; i < 70 * 64; ++i)
        pixels[i] = i % 3 == 0 ? 0.0f : i % 5 == 0 ? -0.0f : i % 7 == 0 ? std::nanf("") : std::abs(pixels[i]);
    const auto bits = [&](const Placement& placement) {
        return bitsOf(MorphologyRun<CudaOpening2d>(image, 3, false, placement));
    };
    EXPECT_EQ(bits({false, true, {29, 41}}), bits({}));
}
