#include "Kernels/ExtractMaximumIntensity.h"

#include <limits>
#include <random>
#include <tuple>

#include "PaddedVolume.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

template <typename Types>
class ExtractMaximumIntensityTest : public ::testing::Test {};
using ImageAndIndexTypes = ::testing::Types<std::tuple<float, std::uint8_t>, std::tuple<double, std::uint8_t>,
                                            std::tuple<float, std::uint16_t>, std::tuple<double, std::uint16_t>,
                                            std::tuple<float, std::uint32_t>, std::tuple<double, std::uint32_t>>;
TYPED_TEST_SUITE(ExtractMaximumIntensityTest, ImageAndIndexTypes);

}  // namespace

// Few different pixels, so many are equal. As doubles two of them are more than 1, and the float 1 when stored: the
// larger one is taken again after the smaller one.
TYPED_TEST(ExtractMaximumIntensityTest, KeepsTheEarlierOfEqualPixels) {
    using T = std::tuple_element_t<0, TypeParam>;
    using L = std::tuple_element_t<1, TypeParam>;
    using Limits = std::numeric_limits<T>;
    const T pixels[]{Limits::quiet_NaN(), -Limits::infinity(), -3, -1, 1, T(1 + 1e-12), T(1 + 2e-12), T(1 - 1e-12)};
    std::mt19937 random(1);
    for (const std::array<std::size_t, 3>& size :
         {std::array<std::size_t, 3>{1, 1, 1}, {63, 2, 1}, {65, 1, 2}, {200, 3, 2}}) {
        SCOPED_TRACE(testing::Message() << size[0] << " x " << size[1] << " x " << size[2]);
        PaddedVolume<float> maximum(size, 2, -2.0F);
        PaddedVolume<L> indices(size, 5, L(250), 3);
        const auto deviceMaximum = toDevice(maximum.elements);
        const auto deviceIndices = toDevice(indices.elements);
        for (const L index : {L(7), L(3), L(200), L(5)}) {
            PaddedVolume<T> image(size, index % 4, T{9});  // 9 stands in the padding alone
            image.forEachVoxel([&](T& pixel) { pixel = pixels[random() % std::size(pixels)]; });
            const auto device = toDevice(image.elements);
            extractMaximumIntensity<T, L>(device.get(), image.pitch(), image.slicePitch(), index, deviceMaximum.get(),
                                          maximum.pitch(), maximum.slicePitch(), deviceIndices.get(), indices.pitch(),
                                          indices.slicePitch(), size[0], size[1], size[2], nullptr);
            image.forEachPosition([&](std::size_t x, std::size_t y, std::size_t z) {
                const T pixel = image.elements[image.indexOf(x, y, z)];
                float& most = maximum.elements[maximum.indexOf(x, y, z)];
                if (!(pixel > static_cast<T>(most))) return;
                most = static_cast<float>(pixel);
                indices.elements[indices.indexOf(x, y, z)] = index;
            });
            EXPECT_EQ(toHost(deviceMaximum, maximum.elements.size()), maximum.elements);
            EXPECT_EQ(toHost(deviceIndices, indices.elements.size()), indices.elements);
        }
    }
}
