#include <algorithm>
#include <cmath>
#include <random>

#include "DocsTable.h"
#include "MedianFilterRun.h"
#include "PlainFilters.h"
#include "RunChecks.h"

using namespace zel;
using namespace zel::test;

namespace {

template <typename T>
std::vector<T> plainMedians(const PlainVolume<T>& image, unsigned radius) {
    const auto middle = [](std::vector<T> seen) {
        std::nth_element(seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(seen.size() / 2), seen.end());
        return seen[seen.size() / 2];
    };
    return plainWindowFilter(image, rectangle(2 * radius + 1, 2 * radius + 1), middle, mirroredAtEdge);
}

template <typename T>
class MedianFilterTest : public ::testing::Test {};

using PixelTypes =
    decltype(testedTypes(cuda::CudaMedianFilter2d::InstanceTypes{}, cuda::CudaMedianFilter2d::TypesAsFloat{}));
TYPED_TEST_SUITE(MedianFilterTest, PixelTypes);

}  // namespace

TYPED_TEST(MedianFilterTest, GivesTheMedianWhereverTheImagesLieAndHoweverTheyAreCut) {
    using T = TypeParam;
    std::mt19937 random(7);
    for (const unsigned radius : {0, 1, 2, 3, 4, 5, 7, 9, 20}) {
        const ImageSize size{1 + random() % 90, 1 + random() % 60};
        SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << ", radius " << radius);
        HostImage image = randomImage<T>(size, random());
        expectEverywhere(plainMedians<T>({{size.x, size.y, 1}, readAll<T>(image)}, radius),
                         std::vector<Vector2<unsigned>>{{0, 0}, {48, 44}, {61, 1}},
                         [&](const Placement& placement) { return MedianFilterRun(image, radius, placement); });
    }
}

// In tiles a window meets the same pixels at another place in a register.
TEST(MedianFilterFloatTest, TilesDoNotChangeABitOfZerosAndNaNs) {
    HostImage image = randomImage<float>({90, 64}, 4);
    float* const pixels = voxels<float>(image);
    for (int i = 0; i < 90 * 64; ++i)
        pixels[i] = i % 3 == 0   ? 0.0f
                    : i % 5 == 0 ? -0.0f
                    : i % 2 == 0 ? std::copysign(std::nanf("7"), pixels[i])
                                 : pixels[i];
    for (const unsigned radius : {1, 2, 3, 5, 20}) {
        const auto bits = [&](const Placement& placement) { return bitsOf(MedianFilterRun(image, radius, placement)); };
        EXPECT_EQ(bits({false, true, {49, 47}}), bits({})) << "radius " << radius;
    }
}
