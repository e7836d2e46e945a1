#include <gtest/gtest.h>

#include <cmath>
#include <locale>

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

/// An image of which nothing is there but what it tells.
class ToldImage : public LocatedImage {
public:
    ToldImage(VoxelTypes type, const ImageSize& size) : type_(type), dimensions_{size.x, size.y, size.z, 1, 1} {}
    std::size_t getDimension(const int& axis) const override { return dimensions_.at(static_cast<std::size_t>(axis)); }
    VoxelTypes getDataType() const override { return type_; }
    bool readRow(std::size_t, void*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t) const override {
        return false;
    }
    bool writeRow(std::size_t, const void*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t) override {
        return false;
    }
    bool isDeviceResident() const override { return onDevice; }
    const void* hostDataReadOnly() const override { return voxels; }

    bool onDevice = false;
    const void* voxels = nullptr;

private:
    VoxelTypes type_;
    std::array<std::size_t, 5> dimensions_;
};

}  // namespace

TEST(ValidationTest, EachAlgorithmTakesItsTypes) {
    expectTypes<CudaBoxFilter2d>({u8, u16, s16, f32, s8});
    expectTypes<CudaMedianFilter2d>({u8, u16, s16, f32, s8});
    expectTypes<CudaErosion2d>({u8, u16, f32, s8, s16});
    expectTypes<CudaClosing2d>({u8, u16, f32, s8, s16});
    expectTypes<CudaGaussianFilter3d>({u8, u16, u32, s8, s16, s32, f32, f64});
    expectTypes<CudaAdaptiveManifoldNlmFilter>({u8, u16, u32, s8, s16, s32, f32, f64});
    EXPECT_EQ(Valid<CudaBoxFilter2d>(u32).message(),
              "inputImage is of type uint32; the type must be one of uint8, uint16, int16, float32, int8");
}

TEST(ValidationTest, RefusesImagesThatDoNotFitTogether) {
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

    ToldImage onNoDevice(u8, {6, 5});
    onNoDevice.onDevice = true;
    const ImageModelSizeProxy part(&onNoDevice, 0, 6, 0, 5, 0, 1, 0, 1, 0, 1);
    for (const ImageModel* image : std::initializer_list<const ImageModel*>{&onNoDevice, &part}) {
        filter.inputImage = image;
        EXPECT_EQ(valid.message(),
                  "inputImage says that it lies on the device; only a TarnwayImage or a part of one can");
    }
}

// Positions along a line are signed 32-bit numbers, those in a kernel's margins too.
TEST(ValidationTest, RefusesLinesThatCannotBeCounted) {
    constexpr std::size_t longest = 2147483647;
    for (const ImageSize& size : {ImageSize{longest + 1}, {1, longest + 1}, {1, 1, longest + 1}}) {
        ToldImage image(u8, size);
        Valid<CudaGaussianFilter3d> gaussian;
        gaussian.algorithm.inputImage = &image;
        EXPECT_THAT(gaussian.message(), testing::HasSubstr("; at most 2147483647 are allowed"));
    }
    for (const auto& [length, taken] : {std::pair{longest - 6, true}, {longest - 5, false}}) {
        ToldImage image(u8, {1, length}), output(u8, {1, length});
        Valid<CudaGaussianFilter3d> gaussian;
        gaussian.algorithm.inputImage = &image;
        gaussian.algorithm.outputImage = &output;
        EXPECT_EQ(gaussian.passes(), taken) << gaussian.message();
    }
}

TEST(ValidationTest, TellsPlainNumbersInEveryLocale) {
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
        char do_decimal_point() const override { return ';'; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    Valid<CudaBoxFilter2d> valid(u8, {2000, 1});
    valid.algorithm.tilingMode = 1;
    valid.algorithm.tileSize = {1000, 0};
    EXPECT_EQ(valid.message(), "tileSize is (1000, 0); with tilingMode 1 each component must be at least 1");
    HostImage other(u8, {1999, 1});
    valid.algorithm.outputImage = &other;
    EXPECT_EQ(valid.message(), "outputImage is 1999 x 1 x 1; it must have the size of inputImage, 2000 x 1 x 1");
    Valid<CudaGaussianFilter3d> gaussian;
    gaussian.algorithm.standardDeviation = {1, -1000.5, 1};
    EXPECT_THAT(gaussian.message(), testing::StartsWith("standardDeviation.y is -1000.5;"));
    std::locale::global(before);
}

TEST(ValidationTest, RefusesParametersOutOfRange) {
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
    for (const double sigma : {1e-46, 1e39}) {
        nlm.algorithm.spatialSigma = sigma;
        EXPECT_THAT(nlm.message(), testing::EndsWith("; as a float it must be a finite number above 0"));
    }
    nlm.algorithm.spatialSigma = 1;
    nlm.algorithm.haloRadius = 1073741824;
    EXPECT_EQ(nlm.message(), "haloRadius is 1073741824; it must be from 0 to 1073741823");
}

TEST(ValidationTest, ChecksTemplateAndMask) {
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
    matching.outputIndexImage = &index;

    matching.frequencyFilter = &result;
    EXPECT_EQ(message(), "outputScoreImage shares memory with frequencyFilter; it must be another image");
    matching.frequencyFilter = nullptr;
    HostImage maskAsOutput(u16, {8, 8, 8}, index.data());
    matching.inputTemplate = &image;
    matching.inputMask = &maskAsOutput;
    EXPECT_EQ(message(), "outputIndexImage shares memory with inputMask; it must be another image");
}

TEST(ValidationTest, ChecksTheTableAndTheFilterOfItsLargestBox) {
    HostImage image(f32, {8, 8, 8}), result(f32, {8, 8, 8}), index(u16, {8, 8, 8}), part(f32, {2, 6, 3});
    CudaTemplateMatching3d matching;
    matching.inputImage = &image;
    matching.inputTemplate = &part;
    matching.outputScoreImage = &result;
    matching.outputIndexImage = &index;
    const auto message = [&] { return messageOf<RuntimeError>([&] { matching.run(); }); };
    const auto setTable = [&](const char* column, std::vector<double> values) {
        matching.transformationTable = std::make_shared<const tarnway::DataFrameView>(
            std::vector<tarnway::DataFrameView::Column>{{column, std::move(values)}});
    };
    const std::string none = "No runner is available for CudaTemplateMatching3d";
    // A quarter turn about z lays the 6 along x, where the filter needs one more.
    setTable("psi", {0, M_PI / 2});
    for (const auto& [size, expected] :
         {std::pair<ImageSize, std::string>{{7, 6, 3}, none},
          {{6, 6, 3},
           "frequencyFilter is 6 x 6 x 3; it must be at least 7 x 6 x 3, the largest box of inputTemplate "
           "and one more along x"},
          {{7, 5, 3},
           "frequencyFilter is 7 x 5 x 3; it must be at least 7 x 6 x 3, the largest box of inputTemplate "
           "and one more along x"}}) {
        HostImage filter(f32, size);
        matching.frequencyFilter = &filter;
        EXPECT_EQ(message(), expected);
    }
    matching.frequencyFilter = nullptr;
    setTable("scaleX", {1, 0});
    EXPECT_EQ(message(), "transformationTable has scaleX 0 in row 1; a scale must be a finite number above 0");
    setTable("phi", {std::nan("")});
    EXPECT_EQ(message(), "transformationTable has phi nan in row 0; an angle must be a finite number of radians");
    setTable("Phi", {});
    EXPECT_EQ(message(),
              "transformationTable has a column \"Phi\"; the columns are phi, theta, psi, scaleX, scaleY "
              "and scaleZ");
    setTable("scaleZ", {1e300});
    EXPECT_THAT(message(), testing::HasSubstr("; at most 2147483647 are allowed"));
}

TEST(ValidationTest, FindsSharedMemoryHoweverItIsReached) {
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

    ToldImage told(u8, {6, 5});
    told.voxels = valid.input.data();
    filter.outputImage = &told;
    EXPECT_EQ(valid.message(), shared) << "an image of a user's own class over the buffer";
    ToldImage toldInput(u8, {6, 5});
    toldInput.voxels = told.voxels;
    filter.inputImage = &toldInput;
    EXPECT_EQ(valid.message(), shared) << "two of them";
    std::vector<std::uint8_t> buffer(6 * 9);
    HostImage above(u8, {6, 5}, buffer.data());
    for (const auto& [row, shares] : {std::pair{4, true}, {5, false}}) {
        HostImage below(u8, {6, 4}, buffer.data() + 6 * row);
        ImageModelSizeProxy inner(&above, 0, 6, 1, 4, 0, 1, 0, 1, 0, 1);
        filter.inputImage = &inner;
        filter.outputImage = &below;
        EXPECT_EQ(valid.message() == shared, shares) << row;
    }
    // Images at one address whose parts cannot be told apart by boxes: another height or type.
    HostImage higher(u8, {6, 8}, buffer.data());
    ImageModelSizeProxy top(&above, 0, 6, 0, 2, 0, 1, 0, 1, 0, 1), same(&higher, 0, 6, 1, 2, 0, 1, 0, 1, 0, 1);
    filter.inputImage = &top;
    filter.outputImage = &same;
    EXPECT_EQ(valid.message(), shared);
    Valid<CudaGaussianFilter3d> gaussian;
    HostImage asFloats(f32, {1, 13}, buffer.data());
    ImageModelSizeProxy bytes(&above, 2, 1, 0, 5, 0, 1, 0, 1, 0, 1), floats(&asFloats, 0, 1, 3, 5, 0, 1, 0, 1, 0, 1);
    gaussian.algorithm.inputImage = &bytes;
    gaussian.algorithm.outputImage = &floats;
    EXPECT_EQ(gaussian.message(), shared);

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
