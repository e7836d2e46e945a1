#include "Kernels/MultiplyImage.h"
#include "Kernels/SquareImage.h"
#include "Kernels/SubtractImage.h"
#include "Pixelwise.h"
#include "zel/Exceptions.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

template <typename T>
class PixelArithmeticTest : public ::testing::Test {};
TYPED_TEST_SUITE(PixelArithmeticTest, FloatTypes);

}  // namespace

TYPED_TEST(PixelArithmeticTest, WorksWhereverTheResultGoes) {
    using T = TypeParam;
    using Pixels = std::vector<T>;
    const T value = T(1.7);
    const PixelwiseOperation<T> multiply{launching<2>(multiplyImage<T>),
                                         [](const Pixels& in) { return in[0] * in[1]; }};
    const PixelwiseOperation<T> square{launching<1>(squareImage<T>), [](const Pixels& in) { return in[0] * in[0]; }};
    // Subtractions take slices without padding between them.
    const PixelwiseOperation<T> subtract{[](const auto& in, const auto& out, const VolumeSize& size) {
                                             subtractImage<T>(in[0].first, in[0].pitch, in[1].first, in[1].pitch,
                                                              out.first, out.pitch, size[0], size[1], size[2], nullptr);
                                         },
                                         [](const Pixels& in) { return in[0] - in[1]; }, 0};
    const PixelwiseOperation<T> subtractValue{[=](const auto& in, const auto& out, const VolumeSize& size) {
                                                  subtractImageWithValue<T>(in[0].first, in[0].pitch, value, out.first,
                                                                            out.pitch, size[0], size[1], size[2],
                                                                            nullptr);
                                              },
                                              [=](const Pixels& in) { return in[0] - value; }, 0};
    expectPixelwise(multiply, {"abc", "aba", "abb", "aac", "aaa"});
    expectPixelwise(square, {"ab", "aa"});
    expectPixelwise(subtract, {"abc", "aba", "abb", "aaa"});
    expectPixelwise(subtractValue, {"ab", "aa"});
}

// What the launchers have in common.
TEST(PixelArithmeticTest, LaunchesNothingForADepthOfZeroAndReportsARefusedLaunch) {
    const RandomVolume<float> image({5, 2, 1}, 0, 0, 1);
    const auto square = [&](std::size_t height, std::size_t depth) {
        squareImage(image.device.get(), 20, 40, image.device.get(), 20, 40, 5, height, depth, nullptr);
    };
    square(2, 0);
    image.expect(image.plain.elements);
    EXPECT_THROW(square(0, 1), zel::RuntimeError) << "a grid of no blocks";
}

// The float is widened, the product is in double.
TEST(PixelArithmeticTest, MultipliesDoublesByFloats) {
    const std::vector<double> a{0.1, 1e300}, expected{0.1 * double{0.1F}, 1e300 * double{3.0F}};
    const auto first = toDevice(a), out = toDevice(std::vector<double>(2));
    const auto second = toDevice(std::vector<float>{0.1F, 3});
    launchRowsPerSlice(1, 1, nullptr, [&](const cudaLaunchConfig_t& config, std::uint64_t) {
        cudaLaunchKernelEx(&config, multiplyImageKernel<double, float>, first.get(), 0, second.get(), 0, out.get(), 0,
                           2);
        cudaLaunchKernelEx(&config, multiplyImageInsituKernel<double, float>, first.get(), 0, second.get(), 0, 2);
    });
    EXPECT_EQ(toHost(out, 2), expected);
    EXPECT_EQ(toHost(first, 2), expected);
}
