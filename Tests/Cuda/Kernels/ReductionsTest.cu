#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <tuple>

#include "Kernels/FindPositionMaxiamalIntensity.h"
#include "Kernels/IntensityStatistics.h"
#include "Kernels/MeanIntensity.h"
#include "Kernels/RowReduction.h"
#include "PaddedVolume.h"
#include "zel/VoxelTypes.h"

using namespace zel::cuda;
using namespace zel::test;

namespace {

using Size = std::array<std::size_t, 3>;
constexpr Size sizes[]{{1, 1, 1}, {1, 70, 1}, {31, 2, 1}, {63, 3, 2}, {64, 2, 1}, {65, 5, 2}, {97, 1, 1}, {300, 9, 3}};

/// What a reduction makes of an image: each of up to 64 lanes adds its pixels of a row, then the row folds its lanes,
/// then the image its rows.
/// @param add   called with a record and a position.
/// @param fold  called with the record to fold into, and the other one.
template <typename Record, typename Add, typename Fold>
Record reduced(const Size& size, const Add& add, const Fold& fold) {
    const std::size_t lanes = std::min<std::size_t>(size[0], 64);
    Record all{};
    for (std::size_t z = 0; z < size[2]; ++z) {
        for (std::size_t y = 0; y < size[1]; ++y) {
            Record row{};
            for (std::size_t first = 0; first < lanes; ++first) {
                Record lane{};
                for (std::size_t x = first; x < size[0]; x += lanes) add(lane, x, y, z);
                fold(row, lane);
            }
            fold(all, row);
        }
    }
    return all;
}

/// Values that show in which order they were summed, also in the padding.
template <typename T>
PaddedVolume<T> randomVolume(const Size& size, std::size_t rowPadding, unsigned seed) {
    PaddedVolume<T> volume(size, rowPadding, T{});
    std::mt19937 random(seed);
    for (T& element : volume.elements) {
        if constexpr (std::is_integral_v<T>)
            element = static_cast<T>(random());
        else
            element = static_cast<T>(std::ldexp(std::normal_distribution<>()(random), static_cast<int>(random() % 60)));
    }
    return volume;
}

void foldStatistics(IntensityStatisticsInfo& into, const IntensityStatisticsInfo& from) {
    if (from.count == 0) return;
    if (into.count == 0)
        into = from;
    else
        into = {into.count + from.count, std::min(into.minimum, from.minimum), std::max(into.maximum, from.maximum),
                into.mean + from.mean, into.standardDeviation + from.standardDeviation};
}

/// @param weights  null where all pixels count.
template <typename T, typename U>
IntensityStatisticsInfo gathered(const PaddedVolume<T>& image, const PaddedVolume<U>* weights) {
    const auto add = [&](IntensityStatisticsInfo& info, std::size_t x, std::size_t y, std::size_t z) {
        const U weight = weights == nullptr ? U{1} : weights->elements[weights->indexOf(x, y, z)];
        if (!(weight > 0)) return;
        const double value = static_cast<double>(weight) * static_cast<double>(image.elements[image.indexOf(x, y, z)]);
        info = {info.count + 1, std::min(info.minimum, value), std::max(info.maximum, value), info.mean + value,
                std::fma(value, value, info.standardDeviation)};
    };
    return reduced<IntensityStatisticsInfo>(image.size, add, foldStatistics);
}

void expectSame(double value, double expected, const char* name) {
    EXPECT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected)))
        << name << ": " << value << ", not " << expected;
}

void expectEqual(const IntensityStatisticsInfo& info, const IntensityStatisticsInfo& expected) {
    EXPECT_EQ(std::tie(info.count, info.minimum, info.maximum),
              std::tie(expected.count, expected.minimum, expected.maximum));
    expectSame(info.mean, expected.mean, "mean");
    expectSame(info.standardDeviation, expected.standardDeviation, "deviation");
}

void expectEqual(const PositionMaximalIntensityInfo& info, const PositionMaximalIntensityInfo& expected) {
    EXPECT_EQ(std::tie(info.positionX, info.positionY, info.minimum, info.maximum),
              std::tie(expected.positionX, expected.positionY, expected.minimum, expected.maximum));
}

template <typename T>
void expectMean(const Size& size) {
    SCOPED_TRACE(testing::Message() << zel::voxelTypeName(zel::voxelTypeOf<T>) << ", " << size[0] << " x " << size[1]);
    const auto image = randomVolume<T>({size[0], size[1], 1}, 3, 1);
    const auto add = [&](double& sum, std::size_t x, std::size_t y, std::size_t) {
        sum += static_cast<double>(image.elements[image.indexOf(x, y, 0)]);
    };
    const double sum = reduced<double>(image.size, add, [](double& into, double from) { into += from; });
    double mean = NAN;
    meanIntensity<T>(toDevice(image.elements).get(), image.pitch(), size[0], size[1], &mean, nullptr);
    EXPECT_EQ(mean, sum / (static_cast<double>(size[0]) * static_cast<double>(size[1])));
}

/// The kernel by itself, since the launcher takes few of its types.
template <typename T, typename U>
void expectGathered(const Size& size) {
    SCOPED_TRACE(testing::Message() << zel::voxelTypeName(zel::voxelTypeOf<T>) << " by "
                                    << zel::voxelTypeName(zel::voxelTypeOf<U>) << ", " << size[0] << " x " << size[1]
                                    << " x " << size[2]);
    const auto image = randomVolume<T>(size, 3, 1);
    const auto weights = randomVolume<U>(size, 5, 2);
    const auto device = toDevice(image.elements);
    const auto deviceWeights = toDevice(weights.elements);
    for (const PaddedVolume<U>* const used : {static_cast<const PaddedVolume<U>*>(nullptr), &weights}) {
        IntensityStatisticsInfo info;
        reduceRows(dim3(static_cast<unsigned>(size[1]), static_cast<unsigned>(size[2]), 1), size[0], &info, nullptr,
                   cumulateIntensitiesKernel<T, U>, device.get(), image.pitch(), image.slicePitch(),
                   used == nullptr ? nullptr : deviceWeights.get(), weights.pitch(), weights.slicePitch(), size[0],
                   size[1], size[2]);
        expectEqual(info, gathered(image, used));
    }
}

template <typename T>
class ReductionsTest : public ::testing::Test {};
using FloatTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ReductionsTest, FloatTypes);

}  // namespace

TEST(ReductionsTest, SumInAFixedOrderOfAllTypes) {
    for (const Size& size : sizes) {
        [&]<typename... T>(zel::TypeList<T...>) {
            (expectMean<T>(size), ...);
            (expectGathered<T, float>(size), ...);
            (expectGathered<T, double>(size), ...);
        }(zel::KernelTypes{});
    }
}

TYPED_TEST(ReductionsTest, StatisticsOfPixelsThatCount) {
    using T = TypeParam;
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();
    const IntensityStatisticsInfo neutral{0, DBL_MAX, -DBL_MAX, nan, nan};
    struct Case {
        std::size_t width;
        std::vector<T> image, weights;
        IntensityStatisticsInfo expected;
    };
    const T tenth = T(0.1);
    const double product = 3 * static_cast<double>(tenth);
    const Case cases[]{{3, {2, 2, 2}, {}, {3, 2, 2, 2, 0}},
                       {1, {-1, -3}, {}, {2, -3, -1, -2, 1}},
                       {3, {1, 2, 3}, {0, 0, 0}, neutral},
                       {2, {1, 2, 3, 4}, {T(nan), -1, 2, T(0.5)}, {2, 2, 6, 4, 2}},
                       {2, {T(nan), T(infinity), 5, 7}, {0, 0, 1, 1}, {2, 5, 7, 6, 1}},  // rows of which none counts
                       {2, {5, 7, T(nan), T(infinity)}, {1, 1, 0, -1}, {2, 5, 7, 6, 1}},
                       {2, {T(nan), 1}, {}, {2, 1, 1, nan, nan}},
                       {2, {T(infinity), 1}, {}, {2, 1, infinity, infinity, nan}},
                       {1, {T(infinity)}, {}, {1, DBL_MAX, infinity, infinity, nan}},
                       {1, {T(-infinity)}, {}, {1, -infinity, -DBL_MAX, -infinity, nan}},
                       {2, {tenth, tenth}, {3, 0}, {1, product, product, product, 0}}};  // in double
    for (const auto& [width, image, weights, expected] : cases) {
        SCOPED_TRACE(testing::PrintToString(image) + " by " + testing::PrintToString(weights));
        const auto device = toDevice(image), deviceWeights = weights.empty() ? nullptr : toDevice(weights);
        IntensityStatisticsInfo info{9, 9, 9, 9, 9};
        cumulateIntensities<T>(device.get(), width * sizeof(T), 0, deviceWeights.get(), width * sizeof(T), 0, width,
                               image.size() / width, 1, &info, nullptr);
        expectEqual(info, expected);
    }
}

// Three equal pixels whose squares, as rounded, give less than the square of their mean.
TEST(ReductionsTest, VarianceBelowZeroByRoundingGivesNaN) {
    IntensityStatisticsInfo info;
    cumulateIntensities<double>(toDevice(std::vector<double>{0.1, 0.1, 0.1}).get(), 24, 24, nullptr, 0, 0, 3, 1, 1,
                                &info, nullptr);
    EXPECT_TRUE(std::isnan(info.standardDeviation)) << info.standardDeviation;
}

TYPED_TEST(ReductionsTest, PositionAmongEqualMaxima) {
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    constexpr T nan = Limits::quiet_NaN(), infinity = Limits::infinity();
    struct Case {
        std::size_t width, height;
        T others;
        std::vector<std::tuple<std::size_t, std::size_t, T>> pixels;  ///< x, y and the value
        PositionMaximalIntensityInfo expected;
    };
    const Case cases[]{
        {70, 3, 5, {}, {0, 0, 5, 5}},
        {1, 3, 1, {{0, 1, 3}, {0, 2, 3}}, {0, 1, 1, 3}},
        {66, 2, nan, {{64, 1, -7}, {65, 1, -8}}, {64, 1, -8, -7}},
        {66, 2, nan, {}, {}},
        {66, 2, -infinity, {}, {0, 0, -infinity, -DBL_MAX}},
        {66, 2, -infinity, {{5, 1, -Limits::max() / 2}, {65, 0, nan}}, {5, 1, -infinity, -Limits::max() / 2}},
        {66, 2, nan, {{3, 1, infinity}, {65, 1, infinity}}, {65, 1, DBL_MAX, infinity}}};
    for (const auto& [width, height, others, pixels, expected] : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &expected - &cases[0].expected);
        PaddedVolume<T> image({width, height, 1}, 3, T{9});
        auto voxels = std::vector<T>(width * height, others);
        for (const auto& [x, y, value] : pixels) voxels[x + y * width] = value;
        PositionMaximalIntensityInfo info{9, 9, 9, 9};
        findPositionMaximalIntensity<T>(toDevice(image.with(voxels)).get(), image.pitch(), width, height, &info,
                                        nullptr);
        expectEqual(info, expected);
    }
}

TYPED_TEST(ReductionsTest, PositionInRandomImagesOfFewValues) {
    using T = TypeParam;
    std::mt19937 random(1);
    const auto take = [](PositionMaximalIntensityInfo& into, const PositionMaximalIntensityInfo& from) {
        into.minimum = std::min(into.minimum, from.minimum);
        if (from.maximum > into.maximum) into = {from.positionX, from.positionY, into.minimum, from.maximum};
    };
    for (const auto& [width, height, depth] : sizes) {
        for (const unsigned values : {2, 9, 100}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << " of " << values << " values");
            PaddedVolume<T> image({width, height, 1}, 3, T{1000});
            image.forEachVoxel([&](T& pixel) { pixel = static_cast<T>(random() % values) - 50; });
            const auto add = [&](PositionMaximalIntensityInfo& info, std::size_t x, std::size_t y, std::size_t) {
                const double value = image.elements[image.indexOf(x, y, 0)];
                take(info, {x, y, value, value});
            };
            PositionMaximalIntensityInfo info;
            findPositionMaximalIntensity<T>(toDevice(image.elements).get(), image.pitch(), width, height, &info,
                                            nullptr);
            expectEqual(info, reduced<PositionMaximalIntensityInfo>(image.size, add, take));
        }
    }
}
