#include <gtest/gtest.h>

#include <cmath>

#include "Messages.h"
#include "TestImages.h"
#include "zel/ImageModelAdapter.h"
#include "zel/ImageModelSizeProxy.h"
#include "zel/algorithms.h"

using namespace zel;
using namespace zel::cuda;
using test::messageOf;

namespace {

/// An algorithm whose properties are in order. Without a runner, a run of it then fails for the lack of one, so any
/// other message comes from the validation.
template <typename Algo>
struct Valid {
    explicit Valid(VoxelTypes type = VoxelTypes::uint8, const ImageSize& size = {6, 5})
        : input(type, size), output(type, size) {
        algorithm.inputImage = &input;
        if constexpr (requires { algorithm.outputImage; }) algorithm.outputImage = &output;
    }

    std::string message() {
        return messageOf<RuntimeError>([&] { algorithm.run(); });
    }
    bool passes() { return message() == "No runner is available for " + algorithm.classInfo()->className(); }

    HostImage input;
    HostImage output;
    Algo algorithm;
};

template <typename Algo>
void expectTypes(std::initializer_list<VoxelTypes> taken) {
    for (const VoxelTypes type : allVoxelTypes) {
        Valid<Algo> valid(type);
        const bool expected = std::find(taken.begin(), taken.end(), type) != taken.end();
        EXPECT_EQ(valid.passes(), expected) << voxelTypeName(type) << ": " << valid.message();
    }
}

constexpr auto u8 = VoxelTypes::uint8, u16 = VoxelTypes::uint16, u32 = VoxelTypes::uint32, s8 = VoxelTypes::int8,
               s16 = VoxelTypes::int16, s32 = VoxelTypes::int32, f32 = VoxelTypes::float32, f64 = VoxelTypes::float64;

}  // namespace

TEST(Validation, EachAlgorithmTakesItsTypes) {
    expectTypes<CudaBoxFilter2d>({u8, u16, s16, f32, s8});
    expectTypes<CudaMedianFilter2d>({u8, u16, s16, f32, s8});
    expectTypes<CudaErosion2d>({u8, u16, f32, s8, s16});
    expectTypes<CudaClosing2d>({u8, u16, f32, s8, s16});
    expectTypes<CudaGaussianFilter3d>({u8, u16, u32, s8, s16, s32, f32, f64});
    expectTypes<CudaAdaptiveManifoldNlmFilter>({u8, u16, u32, s8, s16, s32, f32, f64});
    EXPECT_EQ(Valid<CudaBoxFilter2d>(u32).message(),
              "inputImage is of type uint32; the type must be one of uint8, uint16, int16, float32, int8");
}

TEST(Validation, RefusesImagesThatDoNotFitTogether) {
    Valid<CudaBoxFilter2d> valid;
    auto& filter = valid.algorithm;
    HostImage empty(u8, {6, 0}), wide(u8, {7, 5}), deep(u8, {6, 5, 3}), furtherAxis(u8, {6, 5, 1, 1, 2});
    HostImage otherType(u16, {6, 5});

    filter.inputImage = nullptr;
    EXPECT_EQ(valid.message(), "inputImage is missing; an image is needed");
    filter.inputImage = &empty;
    EXPECT_EQ(valid.message(), "inputImage has 0 elements along y; an image must have at least 1");
    filter.inputImage = &deep;
    EXPECT_EQ(valid.message(), "inputImage has 3 elements along z; a 2D algorithm takes 1; run it slice by slice");
    filter.inputImage = &furtherAxis;
    EXPECT_EQ(valid.message(), "inputImage has 2 elements along axis 4; this algorithm takes 1");
    filter.inputImage = &wide;
    EXPECT_EQ(valid.message(), "outputImage is 6 x 5 x 1; it must have the size of inputImage, 7 x 5 x 1");
    filter.inputImage = &otherType;
    EXPECT_EQ(valid.message(), "outputImage is of type uint8; it must have the type of inputImage, uint16");
    filter.inputImage = &valid.input;
    filter.outputImage = nullptr;
    EXPECT_EQ(valid.message(), "outputImage is missing; an image is needed");
}

TEST(Validation, RefusesParametersOutOfRange) {
    Valid<CudaBoxFilter2d> box;
    box.algorithm.kernelSizeY = 0;
    EXPECT_EQ(box.message(), "kernelSizeY is 0; it must be from 1 to 2147483647");
    box.algorithm.kernelSizeY = 2147483648U;
    EXPECT_EQ(box.message(), "kernelSizeY is 2147483648; it must be from 1 to 2147483647");
    box.algorithm.kernelSizeY = 2147483647U;
    EXPECT_TRUE(box.passes());
    box.algorithm.tileSize = {0, 4};
    EXPECT_TRUE(box.passes()) << "without tiling the tile size is not looked at";
    box.algorithm.tilingMode = 1;
    EXPECT_EQ(box.message(), "tileSize is (0, 4); with tilingMode 1 each component must be at least 1");

    Valid<CudaOpening2d> opening;
    opening.algorithm.kernelRadius = 0;
    EXPECT_EQ(opening.message(), "kernelRadius is 0; it must be from 1 to 1073741823");

    Valid<CudaGaussianFilter3d> gaussian;
    gaussian.algorithm.standardDeviation = {1, std::nan(""), 1};
    EXPECT_EQ(gaussian.message(), "standardDeviation.y is nan; it must be a finite number of at least 0");
    gaussian.algorithm.standardDeviation = {1, 0, -1};
    EXPECT_EQ(gaussian.message(), "standardDeviation.z is -1; it must be a finite number of at least 0");
    gaussian.algorithm.standardDeviation = {0, 0, 0};
    EXPECT_TRUE(gaussian.passes());
    gaussian.algorithm.kernelSizeFactor = 0;
    EXPECT_EQ(gaussian.message(), "kernelSizeFactor is 0; it must be a finite number above 0");
    gaussian.algorithm.kernelSizeFactor = 3;
    gaussian.algorithm.standardDeviation = {1, 1e12, 1};
    EXPECT_EQ(gaussian.message(),
              "standardDeviation.y is 1e+12; with kernelSizeFactor 3 the kernel has 6e+12 coefficients, and at most "
              "16777215 are allowed");
    gaussian.algorithm.standardDeviation = {0, 0, 1e308};
    gaussian.algorithm.kernelSizeFactor = 1e10;
    EXPECT_THAT(gaussian.message(), testing::HasSubstr("the kernel has inf coefficients"));
    gaussian.algorithm.kernelSizeFactor = 3;
    gaussian.algorithm.standardDeviation = {0, 16777215 / 6.0, 0};
    EXPECT_TRUE(gaussian.passes());
    gaussian.algorithm.tileSize = {4, 4, 0};
    EXPECT_TRUE(gaussian.passes());
    gaussian.algorithm.tilingMode = 1;
    EXPECT_EQ(gaussian.message(), "tileSize is (4, 4, 0); with tilingMode 1 each component must be at least 1");
    gaussian.algorithm.tilingMode = 0;
    HostImage furtherAxis(u8, {6, 5, 1, 2, 1});
    gaussian.algorithm.inputImage = &furtherAxis;
    EXPECT_EQ(gaussian.message(), "inputImage has 2 elements along axis 3; this algorithm takes 1");
    gaussian.algorithm.inputImage = &gaussian.input;
    HostImage asFloat(f32, {6, 5}), asU16(u16, {6, 5});
    gaussian.algorithm.outputImage = &asFloat;
    EXPECT_TRUE(gaussian.passes());
    gaussian.algorithm.outputImage = &asU16;
    EXPECT_EQ(gaussian.message(), "outputImage is of type uint16; the type must be one of uint8, float32");
    Valid<CudaGaussianFilter3d> gaussianOfFloat(f32), gaussianOfDouble(f64);
    gaussianOfFloat.algorithm.outputImage = &gaussianOfDouble.output;
    EXPECT_EQ(gaussianOfFloat.message(),
              "outputImage is of type float64; it must have the type of inputImage, float32");
    gaussianOfDouble.algorithm.outputImage = &gaussianOfFloat.output;
    EXPECT_TRUE(gaussianOfDouble.passes());

    Valid<CudaAdaptiveManifoldNlmFilter> nlm;
    nlm.algorithm.patchRadius = 18;
    EXPECT_EQ(nlm.message(), "patchRadius is 18; it must be from 0 to 17");
    nlm.algorithm.patchRadius = 17;
    nlm.algorithm.rangeSigma = 0;
    EXPECT_EQ(nlm.message(), "rangeSigma is 0; it must be a finite number above 0");
    nlm.algorithm.rangeSigma = 0.01;
    nlm.algorithm.spatialSigma = 32767;  // floor(log2) - 1 is 13: a height of 13 + 2
    EXPECT_TRUE(nlm.passes());
    nlm.algorithm.spatialSigma = 1e6;
    EXPECT_THAT(nlm.message(), testing::StartsWith("spatialSigma is 1e+06; with rangeSigma 0.01 the tree"));
}

TEST(Validation, ChecksTemplateAndMask) {
    HostImage image(f32, {8, 8, 8}), result(f32, {8, 8, 8}), index(u16, {8, 8, 8});
    HostImage part(f32, {3, 3, 3}), mask(u8, {3, 3, 3}), otherMask(u8, {3, 3, 2}), large(f32, {3, 9, 3});
    CudaTemplateMatching3d matching;
    matching.inputImage = &image;
    matching.inputTemplate = &part;
    matching.inputMask = &mask;
    matching.outputScoreImage = &result;
    matching.outputIndexImage = &index;
    const auto message = [&] { return messageOf<RuntimeError>([&] { matching.run(); }); };
    EXPECT_EQ(message(), "No runner is available for CudaTemplateMatching3d");
    matching.inputMask = &otherMask;
    EXPECT_EQ(message(), "inputMask is 3 x 3 x 2; it must have the size of inputTemplate, 3 x 3 x 3");
    matching.inputMask = &mask;
    mask.setSpacing(1, 2);
    EXPECT_EQ(message(), "inputMask has the spacing 2 along axis 1; it must have that of inputTemplate, 1");
    matching.inputMask = nullptr;
    matching.inputTemplate = &large;
    EXPECT_EQ(message(), "inputTemplate is 3 x 9 x 3; it must be no larger than inputImage, 8 x 8 x 8");
    matching.inputTemplate = &part;
    matching.outputIndexImage = &result;
    EXPECT_EQ(message(), "outputIndexImage is of type float32; the type must be one of uint8, uint16, uint32");
}

TEST(Validation, FindsSharedMemoryHoweverItIsReached) {
    Valid<CudaBoxFilter2d> valid;
    auto& filter = valid.algorithm;
    const std::string shared = "outputImage shares memory with inputImage; it must be another image";
    filter.outputImage = &valid.input;
    EXPECT_EQ(valid.message(), shared);

    HostImage sameMemory(u8, {6, 5}, valid.input.data());
    filter.outputImage = &sameMemory;
    EXPECT_EQ(valid.message(), shared);

    ImageModelSizeProxy whole(&valid.input, 0, 6, 0, 5, 0, 1, 0, 1, 0, 1);
    filter.outputImage = &whole;
    EXPECT_EQ(valid.message(), shared);
    ImageModelAdapter adapter(&whole, u8, DataConvertionTypes::cast);
    filter.outputImage = &adapter;
    EXPECT_EQ(valid.message(), shared);

    // Two halves of one image share nothing, but overlapping parts do.
    HostImage large(u8, {12, 5});
    ImageModelSizeProxy left(&large, 0, 6, 0, 5, 0, 1, 0, 1, 0, 1);
    ImageModelSizeProxy right(&large, 6, 6, 0, 5, 0, 1, 0, 1, 0, 1);
    ImageModelSizeProxy middle(&large, 5, 6, 0, 5, 0, 1, 0, 1, 0, 1);
    filter.inputImage = &left;
    filter.outputImage = &right;
    EXPECT_TRUE(valid.passes()) << valid.message();
    filter.outputImage = &middle;
    EXPECT_EQ(valid.message(), shared);
}
