#include <limits>

#include "Kernels/NormalizeStandardization.h"
#include "Kernels/NormalizeWithStandardDeviation.h"
#include "Pixelwise.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

template <typename T>
class NormalizationTest : public ::testing::Test {};
TYPED_TEST_SUITE(NormalizationTest, FloatTypes);

constexpr double mean = 1.3, deviation = -0.7;

template <typename To, typename From>
To standardized(const std::vector<From>& in) {
    return static_cast<To>((in[0] - mean) / deviation);
}

/// The threshold, what stands below it, and the limits of the result.
template <typename T>
struct Limits {
    T threshold, replacement, low, high;
};

template <typename T, typename Image>
void normalize(const std::vector<Image>& in, const Image& out, const VolumeSize& size, const Limits<T>& limits) {
    normalizeWithStandardDeviation<T>(in[0].first, in[0].pitch, in[0].slicePitch, in[1].first, in[1].pitch,
                                      in[1].slicePitch, in[2].first, in[2].pitch, in[2].slicePitch, limits.threshold,
                                      limits.replacement, limits.low, limits.high, out.first, out.pitch, out.slicePitch,
                                      size[0], size[1], size[2], nullptr);
}

}  // namespace

TYPED_TEST(NormalizationTest, StandardizesByAMeanAndADeviation) {
    using T = TypeParam;
    const PixelwiseOperation<T> launcher{launching<1>(standardization<T>, mean, deviation), standardized<T, T>};
    expectPixelwise(launcher, {"ab", "aa"});
    const PixelwiseOperation<double, float> converting{
        [](const auto& in, const auto& out, const VolumeSize& size) {
            launchBySlices(size, [&](const cudaLaunchConfig_t& config, const auto& at) {
                cudaLaunchKernelEx(&config, normalizeAndConvert2dKernel<double, float>, at(in[0]), in[0].pitch, at(out),
                                   out.pitch, size[0], mean, deviation);
            });
        },
        standardized<float, double>};
    expectPixelwise(converting, {"ab"});
}

// Of random mean squares most lie below the squared means: their deviation is the smallest one.
TYPED_TEST(NormalizationTest, StandardizesByWhatSurroundsAPixel) {
    using T = TypeParam;
    using Statistics = const T*;
    void (*const plain)(const T*, unsigned long long, Statistics, unsigned long long, Statistics, unsigned long long,
                        T*, unsigned long long, unsigned long long) = standardization2dKernel<T>;
    void (*const insitu)(T*, unsigned long long, Statistics, unsigned long long, Statistics, unsigned long long,
                         unsigned long long) = standardization2dInsituKernel<T>;
    const PixelwiseOperation<T> local{
        [=](const auto& in, const auto& out, const VolumeSize& size) {
            launchBySlices(size, [&](const cudaLaunchConfig_t& config, const auto& at) {
                if (out.first == in[0].first)
                    cudaLaunchKernelEx(&config, insitu, at(out), out.pitch, at(in[1]), in[1].pitch, at(in[2]),
                                       in[2].pitch, size[0]);
                else
                    cudaLaunchKernelEx(&config, plain, at(in[0]), in[0].pitch, at(in[1]), in[1].pitch, at(in[2]),
                                       in[2].pitch, at(out), out.pitch, size[0]);
            });
        },
        [](const std::vector<T>& in) {
            const T variance = in[2] - in[1] * in[1];
            const double deviation = variance < 1e-12 ? 1e-6 : std::sqrt(static_cast<double>(variance));
            return static_cast<T>((static_cast<double>(in[0]) - in[1]) / deviation);
        }};
    expectPixelwise(local, {"abcd", "abca"});
}

TYPED_TEST(NormalizationTest, DividesByTheLocalDeviation) {
    using T = TypeParam;
    const Limits<T> limits{T(0.5), T(0.25), -2, T(1.5)};
    const PixelwiseOperation<T> divide{
        [=](const auto& in, const auto& out, const VolumeSize& size) { normalize(in, out, size, limits); },
        [=](const std::vector<T>& in) {
            const T variance = std::max(T{0}, in[2]) - in[1] * in[1];
            if (variance < limits.threshold) return limits.replacement;
            const double local = std::sqrt(static_cast<double>(variance));
            return std::min(std::max(static_cast<T>(in[0] / local), limits.low), limits.high);
        }};
    expectPixelwise(divide, {"abcd", "abca"});
}

TYPED_TEST(NormalizationTest, DecidesAtTheThresholdAndTheLimits) {
    using T = TypeParam;
    constexpr T nan = std::numeric_limits<T>::quiet_NaN(), infinity = std::numeric_limits<T>::infinity();
    struct Pixel {
        T in, mean, meanSquare, expected;
    };
    const auto check = [](const Limits<T>& limits, const std::vector<Pixel>& pixels) {
        for (const Pixel& pixel : pixels) {
            SCOPED_TRACE(testing::Message() << pixel.in << ", " << pixel.mean << ", " << pixel.meanSquare);
            const auto in = toDevice<T>({pixel.in}), means = toDevice<T>({pixel.mean}),
                       squares = toDevice<T>({pixel.meanSquare}), out = toDevice<T>({T{7}});
            const auto image = [](const auto& device) { return ImageArgument<T>{device.get(), sizeof(T), sizeof(T)}; };
            normalize<T>(std::vector{image(in), image(means), image(squares)}, image(out), {1, 1, 1}, limits);
            EXPECT_EQ(toHost(out, 1)[0], pixel.expected);
        }
    };
    check({4, T(0.25), -1, 1}, {{1, 0, 4, T(0.5)},  // exactly met
                                {1, 0, std::nextafter(T{4}, T{0}), T(0.25)},
                                {1, 1, 5, T(0.5)},
                                {3, 0, 4, 1},
                                {-3, 0, 4, -1},
                                {nan, 0, 4, -1},
                                {1, 0, nan, T(0.25)}});
    check({0, 9, -1, 1}, {{1, 0, -5, 1},  // a mean square below 0 counts as 0, which is not below the threshold
                          {-1, 0, -5, -1},
                          {0, 0, 0, -1},
                          {1, 1, -5, 1},  // the replacement is limited too
                          {5, 0, infinity, 0}});
}
