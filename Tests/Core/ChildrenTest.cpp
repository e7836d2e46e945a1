#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

#include "Messages.h"
#include "TestImages.h"
#include "zel/TemporaryImage.h"
#include "zel/children/IntensityExtrema.h"
#include "zel/children/IntensityStatistics.h"
#include "zel/children/ResampleAffine3d.h"
#include "zel/children/RescaleIntensity.h"
#include "zel/children/ResetImage.h"
#include "zel/children/Resize3d.h"
#include "zel/children/SwapQuadrants.h"

using namespace zel;
using namespace zel::test;
using testing::ElementsAre;

namespace {

/// What a child makes of the image; `set` gives it its parameters.
template <typename Child, typename Set>
RefImpl<TemporaryImage> resultOf(const HostImage& input, const Set& set) {
    const auto child = Child::New(nullptr);
    auto result = TemporaryImage::New(LocationMode::hostMemory);
    child->inputImage = &input;
    child->outputImage = result->getImageModel();
    set(*child);
    child->run();
    return result;
}

/// The input on a box of `size` voxels up to `upper`, each taken from where `toSource` leads.
std::vector<float> resampled(const HostImage& input, const Vector3<int>& size, const tarnway::Point& lower,
                             const tarnway::Point& upper, const tarnway::Transform& toSource) {
    const auto result = resultOf<ResampleAffine3d>(input, [&](ResampleAffine3d& child) {
        child.lowerPoint = lower;
        child.upperPoint = upper;
        child.outputSize = size;
        child.paddingValue = -1;
        child.toSource = toSource;
    });
    EXPECT_EQ(result->getImageModel()->getOrigin(0), lower[0]);
    return readAll<float>(*result->getImageModel());
}

/// About z through a point, by whole quarters; where the turned image's voxels come from.
tarnway::Transform quarterTurns(int quarters, const tarnway::Point& centre) {
    tarnway::Transform turn = tarnway::Transform::identity();
    const double angle = quarters * M_PI / 2;
    turn.setAt(0, 0, std::cos(angle));
    turn.setAt(0, 1, std::sin(angle));
    turn.setAt(1, 0, -std::sin(angle));
    turn.setAt(1, 1, std::cos(angle));
    const tarnway::Point back(-centre[0], -centre[1], -centre[2]);
    return tarnway::translation(centre) * turn * tarnway::translation(back);
}

}  // namespace

TEST(ChildrenTest, QuadrantsSwapSoThatTheCentreIsInTheCorner) {
    const auto swapped = [](const ImageSize& size) {
        std::vector<std::uint8_t> numbers(size.x * size.y * size.z);
        std::iota(numbers.begin(), numbers.end(), std::uint8_t{0});
        HostImage image = imageOf(size, numbers);
        const auto result = resultOf<SwapQuadrants>(image, [](auto&) {});
        const auto swap = SwapQuadrants::New(nullptr);
        swap->inputImage = swap->outputImage = &image;
        swap->run();
        EXPECT_EQ(readAll<std::uint8_t>(image), readAll<std::uint8_t>(*result->getImageModel())) << "in place";
        return readAll<std::uint8_t>(image);
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
    ImageModelSizeProxy part = partOf(image, {1, 1}, {2, 1});
    const auto reset = ResetImage::New(nullptr);
    reset->inputImage = reset->outputImage = &part;
    reset->value = -2.9;
    reset->run();
    EXPECT_THAT(readAll<std::int16_t>(image), ElementsAre(1, 2, 3, 4, -2, -2));
}

TEST(ChildrenTest, ResizeAlignsVoxelCentres) {
    const HostImage image = imageOf<float>({3, 1, 2}, {0, 10, 20, 100, 110, 120});
    const auto resized = [&](const Vector3<int>& size) {
        return resultOf<Resize3d>(image, [&](Resize3d& child) { child.outputSize = size; });
    };
    const auto longer = resized({6, 1, 2});
    EXPECT_THAT(readAll<float>(*longer->getImageModel()),
                ElementsAre(0, 2.5, 7.5, 12.5, 17.5, 20, 100, 102.5, 107.5, 112.5, 117.5, 120));
    EXPECT_EQ(longer->getImageModel()->getSpacing(0), 0.5);
    EXPECT_THAT(readAll<float>(*resized({1, 2, 1})->getImageModel()), ElementsAre(60, 60));
}

TEST(ChildrenTest, ResamplingByTheIdentityReproducesAndQuarterTurnsMoveVoxels) {
    using At = tarnway::Point;
    HostImage image = imageOf<float>({3, 2, 1}, {1, 2, 3, 4, 5, 6});
    const auto identity = tarnway::Transform::identity();
    EXPECT_THAT(resampled(image, {3, 2, 1}, At(0, 0, 0), At(2, 1, 0), identity), ElementsAre(1, 2, 3, 4, 5, 6))
        << "a box of voxel centres";
    EXPECT_THAT(resampled(image, {3, 2, 1}, At(0, 0, 0), At(3, 2, 1), identity), ElementsAre(1, 2, 3, 4, 5, 6))
        << "a box of whole voxels";
    EXPECT_THAT(resampled(image, {3, 1, 1}, At(0, 0, 0), At(2, 0, 0), tarnway::translation(At(0.5, 0, 0))),
                ElementsAre(1.5, 2.5, -1));
    const At centre(1, 0.5, 0);
    // x goes to y: column by column from below. The turned box begins half a voxel to the right and above.
    EXPECT_THAT(resampled(image, {2, 3, 1}, At(0.5, -0.5, 0), At(2.5, 2.5, 1), quarterTurns(1, centre)),
                ElementsAre(4, 1, 5, 2, 6, 3));
    EXPECT_THAT(resampled(image, {3, 2, 1}, At(0, 0, 0), At(2, 1, 0), quarterTurns(2, centre)),
                ElementsAre(6, 5, 4, 3, 2, 1));
    // The same turn in a world of other voxel sizes, elsewhere.
    for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, 2.5);
    image.setOrigin(0, 7);
    EXPECT_THAT(resampled(image, {3, 2, 1}, At(7, 0, 0), At(12, 2.5, 0), quarterTurns(2, At(9.5, 1.25, 0))),
                ElementsAre(6, 5, 4, 3, 2, 1));
}

TEST(ChildrenTest, RefuseWhatTheyCannotDo) {
    const HostImage image = imageOf<float>({2, 1, 1}, {1, 2});
    const HostImage complexImage(VoxelTypes::complex64, {2, 1, 1});
    HostImage other(VoxelTypes::float32, {3, 1, 1});
    const Vector3<int> flat{2, 1, 0}, small{2, 1, 1};
    const std::pair<std::function<void(ResampleAffine3d&)>, const char*> cases[]{
        {[](auto&) {}, "(nothing was raised)"},
        {[&](auto& child) { child.outputSize = flat; }, "outputSize is 2 x 1 x 0; each must be at least 1"},
        {[&](auto& child) { child.outputSize = small; },
         "outputImage is 3 x 1 x 1 x 1 x 1; it must be 2 x 1 x 1 x 1 x 1"},
        {[&](auto& child) { child.inputImage = &complexImage; }, "inputImage is of complex64; its voxels must be real"},
        {[&](auto& child) { child.inputImage = &other; },
         "outputImage is the same image as inputImage; give it one of its own"},
        {[](auto& child) { child.interpolation = 2; }, "interpolation is 2; the only choice is 1, trilinear"},
        {[](auto& child) { child.upperPoint = tarnway::Point(0, NAN, 0); },
         "upperPoint is nan along axis 1; it must be finite"}};
    for (const auto& [change, message] : cases) {
        const auto child = ResampleAffine3d::New(nullptr);
        child->inputImage = &image;
        child->outputImage = &other;
        child->outputSize = {3, 1, 1};
        change(*child);
        EXPECT_EQ(messageOf([&] { child->run(); }), message);
    }
}

TEST(ChildrenTest, RescalingMapsRangeToRange) {
    const auto rescaled = [](HostImage image, const Vector2<double>& from, const Vector2<double>& to) {
        resultOf<RescaleIntensity>(image, [&](RescaleIntensity& child) {
            child.inputRange = from;
            child.outputRange = to;
            child.outputImage = &image;
        });
        return readAll<float>(image);
    };
    EXPECT_THAT(rescaled(imageOf<float>({2, 2, 1}, {2, 3, 6, 8}), {2, 6}, {-1, 1}), ElementsAre(-1, -0.5, 1, 2));
    EXPECT_THAT(rescaled(imageOf<float>({2, 1, 1}, {5, 6}), {6, 5}, {0, 10}), ElementsAre(10, 0)) << "turned round";
    EXPECT_THAT(rescaled(imageOf<float>({2, 1, 1}, {7, 7}), {7, 7}, {-1, 1}), ElementsAre(-1, -1));

    const HostImage image = imageOf<float>({1, 1, 1}, {0});
    EXPECT_THROW(resultOf<RescaleIntensity>(image, [](auto& child) { child.outputTypeChoice = 3; }), RuntimeError);
}
