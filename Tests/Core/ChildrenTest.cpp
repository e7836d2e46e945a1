#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

#include "zel/AbstractPrivateImplementation.h"
#include "zel/HostImage.h"
#include "zel/ImageModelAdapter.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/children/IntensityExtrema.h"
#include "zel/children/IntensityStatistics.h"
#include "zel/children/ResetImage.h"
#include "zel/children/SwapQuadrants.h"

using namespace zel;
using testing::ElementsAre;

namespace {

template <typename T>
HostImage imageOf(const ImageSize& size, std::vector<T> voxels) {
    HostImage image(voxelTypeOf<T>, size);
    std::copy(voxels.begin(), voxels.end(), static_cast<T*>(image.data()));
    return image;
}

template <typename T>
std::vector<T> voxelsOf(ImageModel& image) {
    const auto* const voxels = static_cast<const T*>(image.hostDataReadOnly());
    return {voxels, voxels + image.getDimension(0) * image.getDimension(1) * image.getDimension(2)};
}

}  // namespace

TEST(ChildrenTest, QuadrantsSwapSoThatTheCentreIsInTheCorner) {
    const auto swapped = [](const ImageSize& size) {
        std::vector<std::uint8_t> numbers(size.x * size.y * size.z);
        std::iota(numbers.begin(), numbers.end(), std::uint8_t{0});
        HostImage image = imageOf(size, numbers);
        const auto swap = SwapQuadrants::New(nullptr);
        const auto result = TemporaryImage::New(LocationMode::hostMemory);
        swap->inputImage = &image;
        swap->outputImage = result->getImageModel();
        swap->run();
        swap->outputImage = &image;
        swap->run();
        EXPECT_EQ(voxelsOf<std::uint8_t>(image), voxelsOf<std::uint8_t>(*result->getImageModel())) << "in place";
        return voxelsOf<std::uint8_t>(image);
    };
    EXPECT_THAT(swapped({5, 1, 1}), ElementsAre(2, 3, 4, 0, 1));
    EXPECT_THAT(swapped({3, 2, 1}), ElementsAre(4, 5, 3, 1, 2, 0));
    EXPECT_THAT(swapped({1, 2, 3}), ElementsAre(3, 2, 5, 4, 1, 0));
}

TEST(ChildrenTest, StandardDeviationIsThePopulationsWhateverTheOffset) {
    const auto statistics = IntensityStatistics::New(nullptr);
    for (const double offset : {0.0, 1e9}) {
        HostImage image = imageOf<double>({4, 3, 1}, {1, 5, 3, 3, 1, 5, 3, 3, 1, 5, 3, 3});
        for (double& voxel : std::span(static_cast<double*>(image.data()), 12)) voxel += offset;
        statistics->inputImage = &image;
        statistics->run();
        EXPECT_DOUBLE_EQ(statistics->outputStandardDeviation.get().getRealValue(), std::sqrt(2.0));
    }
    HostImage bytes = imageOf<std::uint8_t>({1, 1, 2}, {0, 255});
    statistics->inputImage = &bytes;
    statistics->run();
    EXPECT_EQ(statistics->outputStandardDeviation.get().getRealValue(), 127.5);
}

TEST(ChildrenTest, ExtremaAreExactAndIgnoreNan) {
    const auto extrema = [](HostImage image) {
        const auto child = IntensityExtrema::New(nullptr);
        const auto measurement = IntensityExtremaMsr::New();
        child->inputImage = &image;
        child->outputMeasurement = measurement.get();
        child->run();
        const std::size_t origin[] = {0, 0, 0};
        const brontal_object_model::TupleX index(origin, 3);
        return std::pair(measurement->minimum_tag.at(index), measurement->maximum_tag.at(index));
    };
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(extrema(imageOf<float>({2, 2, 1}, {nan, 3, -1.5F, nan})), std::pair(-1.5, 3.0));
    EXPECT_EQ(extrema(imageOf<float>({3, 1, 1}, {2, infinity, nan})), std::pair(2.0, double{infinity}));
    EXPECT_EQ(extrema(imageOf<std::int32_t>({1, 1, 3}, {2147483647, -2147483647 - 1, 5})),
              std::pair(-2147483648.0, 2147483647.0));
    EXPECT_TRUE(std::isnan(extrema(imageOf<float>({2, 1, 1}, {nan, nan})).first));
    EXPECT_TRUE(std::isnan(extrema(imageOf<float>({2, 1, 1}, {nan, nan})).second));
}

TEST(ChildrenTest, ResetWritesThroughViewsAndTruncates) {
    HostImage image = imageOf<std::int16_t>({3, 2, 1}, {1, 2, 3, 4, 5, 6});
    ImageModelSizeProxy part(&image, 1, 2, 1, 1, 0, 1, 0, 1, 0, 1);
    const auto reset = ResetImage::New(nullptr);
    reset->inputImage = reset->outputImage = &part;
    reset->value = -2.9;
    reset->run();
    EXPECT_THAT(voxelsOf<std::int16_t>(image), ElementsAre(1, 2, 3, 4, -2, -2));
}
