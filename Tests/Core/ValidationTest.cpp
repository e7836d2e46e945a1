#include <cmath>
#include <locale>

#include "Messages.h"
#include "TestImages.h"
#include "zel/ImageModelAdapter.h"
#include "zel/algorithms.h"

using namespace zel;
using namespace zel::cuda;
using test::messageOf;
using test::partOf;

namespace {

constexpr auto u8 = VoxelTypes::uint8, u16 = VoxelTypes::uint16, u32 = VoxelTypes::uint32, s8 = VoxelTypes::int8,
               s16 = VoxelTypes::int16, s32 = VoxelTypes::int32, f32 = VoxelTypes::float32, f64 = VoxelTypes::float64;

/// An algorithm whose properties are in order, until one is changed.
template <typename Algo>
struct Valid {
    explicit Valid(VoxelTypes type = u8) : input(type, {6, 5}), output(type, {6, 5}) {
        algorithm.inputImage = &input;
        if constexpr (requires { algorithm.outputImage; }) algorithm.outputImage = &output;
    }

    /// What the validation says; nothing when a run gets as far as the choice of a runner, of which there is none.
    std::string refusal() {
        const std::string message = messageOf([&] { algorithm.run(); });
        return message.starts_with("No runner is available for " + algorithm.classInfo()->className()) ? "" : message;
    }
    /// The same with another value of a property, for this time.
    template <typename Base, typename T>
    std::string refusalWith(Property<T> Base::*property, const std::type_identity_t<T>& value) {
        const T before = (algorithm.*property).get();
        algorithm.*property = value;
        const std::string message = refusal();
        algorithm.*property = before;
        return message;
    }

    template <typename Base, typename T>
    void takes(Property<T> Base::*property, const std::type_identity_t<T>& value) {
        EXPECT_EQ(refusalWith(property, value), "");
    }
    /// @param reason  what stands behind the property's name.
    template <typename Base, typename T>
    void refuses(Property<T> Base::*property, const std::type_identity_t<T>& value, const std::string& reason) {
        EXPECT_EQ(refusalWith(property, value), std::string((algorithm.*property).name()) + reason);
    }

    HostImage input, output;
    Algo algorithm;
};

using Box = CudaBoxFilter2d;
using Gaussian = CudaGaussianFilter3d;
using Matching = CudaTemplateMatching3d;

struct ValidMatching : Valid<Matching> {
    explicit ValidMatching(const ImageSize& templateSize) : part(f32, templateSize) {
        algorithm.inputImage = &image;
        algorithm.inputTemplate = &part;
        algorithm.outputScoreImage = &score;
        algorithm.outputIndexImage = &index;
    }

    HostImage image{f32, {8, 8, 8}}, score{f32, {8, 8, 8}}, index{u16, {8, 8, 8}}, part;
};

template <typename Algo>
void expectTypes(std::initializer_list<VoxelTypes> taken) {
    for (const VoxelTypes type : allVoxelTypes) {
        const bool expected = std::find(taken.begin(), taken.end(), type) != taken.end();
        EXPECT_EQ(Valid<Algo>(type).refusal().empty(), expected) << voxelTypeName(type);
    }
}

/// An image that says of itself that it lies on the device.
struct OnNoDevice : HostImage {
    using HostImage::HostImage;
    bool isDeviceResident() const override { return true; }
};

/// An image of a user's own class over memory of the user's.
struct UsersImage : test::RowsOnlyImage {
    explicit UsersImage(HostImage& image) : RowsOnlyImage(HostImage(u8, {6, 5})), memory(image.data()) {}
    const void* hostDataReadOnly() const override { return memory; }
    const void* memory;
};

/// An image that is there in name only.
HostImage emptyFrame(const ImageSize& size) {
    return {u8, size, nullptr};
}

}  // namespace

TEST(ValidationTest, EachAlgorithmTakesItsTypes) {
    expectTypes<CudaBoxFilter2d>({u8, u16, s16, f32, s8});
    expectTypes<CudaMedianFilter2d>({u8, u16, s16, f32, s8});
    expectTypes<CudaErosion2d>({u8, u16, f32, s8, s16});
    expectTypes<CudaClosing2d>({u8, u16, f32, s8, s16});
    expectTypes<CudaGaussianFilter3d>({u8, u16, u32, s8, s16, s32, f32, f64});
    expectTypes<CudaAdaptiveManifoldNlmFilter>({u8, u16, u32, s8, s16, s32, f32, f64});
    EXPECT_EQ(Valid<Box>(u32).refusal(),
              "inputImage is of type uint32; the type must be one of uint8, uint16, int16, float32, int8");
}

TEST(ValidationTest, RefusesImagesThatDoNotFitTogether) {
    HostImage empty(u8, {6, 0}), wide(u8, {7, 5}), deep(u8, {6, 5, 3}), fourth(u8, {6, 5, 1, 2}),
        fifth(u8, {6, 5, 1, 1, 2}), otherType(u16, {6, 5});
    const OnNoDevice onNoDevice(u8, {6, 5});
    const ImageModelSizeProxy part = partOf(onNoDevice, {}, {6, 5});
    Valid<Box> box;
    box.refuses(&Box::inputImage, nullptr, " is missing; an image is needed");
    box.refuses(&Box::outputImage, nullptr, " is missing; an image is needed");
    box.refuses(&Box::inputImage, &empty, " has 0 elements along y; an image must have at least 1");
    box.refuses(&Box::inputImage, &deep, " has 3 elements along z; a 2D algorithm takes 1; run it slice by slice");
    box.refuses(&Box::inputImage, &fourth, " has 2 elements along axis 3; this algorithm takes 1");
    box.refuses(&Box::inputImage, &fifth, " has 2 elements along axis 4; this algorithm takes 1");
    box.refuses(&Box::outputImage, &wide, " is 7 x 5 x 1; it must have the size of inputImage, 6 x 5 x 1");
    box.refuses(&Box::outputImage, &otherType, " is of type uint16; it must have the type of inputImage, uint8");
    for (const ImageModel* image : std::initializer_list<const ImageModel*>{&onNoDevice, &part}) {
        box.refuses(&Box::inputImage, image,
                    " says that it lies on the device; only a TarnwayImage or a part of one can");
    }
}

// Positions along a line are signed 32-bit numbers, those in a kernel's margins too.
TEST(ValidationTest, RefusesLinesThatCannotBeCounted) {
    constexpr std::size_t maxLength = 2147483647;
    Valid<Gaussian> gaussian;
    for (const auto& [size, axis] :
         {std::pair{ImageSize{maxLength + 1}, "x"}, {{1, maxLength + 1}, "y"}, {{1, 1, maxLength + 1}, "z"}}) {
        const HostImage image = emptyFrame(size);
        gaussian.refuses(&Gaussian::inputImage, &image,
                         std::string(" has 2147483648 elements along ") + axis + "; at most 2147483647 are allowed");
    }
    for (const auto& [length, taken] : {std::pair{maxLength - 6, true}, {maxLength - 5, false}}) {
        HostImage image = emptyFrame({1, length}), output = emptyFrame({1, length});
        gaussian.algorithm.inputImage = &image;
        gaussian.algorithm.outputImage = &output;
        EXPECT_EQ(gaussian.refusal().empty(), taken);
    }
}

TEST(ValidationTest, TellsPlainNumbersInEveryLocale) {
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
        char do_decimal_point() const override { return ';'; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    Valid<Gaussian> gaussian;
    gaussian.refuses(&Gaussian::standardDeviation, {1, -1000.5, 1},
                     ".y is -1000.5; it must be a finite number of at least 0");
    gaussian.algorithm.tilingMode = 1;
    gaussian.refuses(&Gaussian::tileSize, {1000, 0, 1},
                     " is (1000, 0, 1); with tilingMode 1 each component must be at least 1");
    std::locale::global(before);
}

TEST(ValidationTest, RefusesParametersOutOfRange) {
    Valid<Box> box;
    box.refuses(&Box::kernelSizeX, 0, " is 0; it must be from 1 to 2147483647");
    box.refuses(&Box::kernelSizeY, 0, " is 0; it must be from 1 to 2147483647");
    box.refuses(&Box::kernelSizeY, 2147483648U, " is 2147483648; it must be from 1 to 2147483647");
    box.takes(&Box::kernelSizeY, 2147483647U);
    box.takes(&Box::tileSize, {0, 4});
    box.algorithm.tilingMode = 1;
    box.refuses(&Box::tileSize, {0, 4}, " is (0, 4); with tilingMode 1 each component must be at least 1");

    Valid<CudaOpening2d>().refuses(&CudaOpening2d::kernelRadius, 0, " is 0; it must be from 1 to 1073741823");

    using Nlm = CudaAdaptiveManifoldNlmFilter;
    Valid<Nlm> nlm;
    nlm.takes(&Nlm::patchRadius, 17);
    nlm.refuses(&Nlm::patchRadius, 18, " is 18; it must be from 0 to 17");
    nlm.refuses(&Nlm::haloRadius, 1073741824, " is 1073741824; it must be from 0 to 1073741823");
    nlm.refuses(&Nlm::rangeSigma, 0, " is 0; it must be a finite number above 0");
    nlm.refuses(&Nlm::spatialSigma, 1e-46, " is 1e-46; as a float it must be a finite number above 0");
    nlm.refuses(&Nlm::spatialSigma, 1e39, " is 1e+39; as a float it must be a finite number above 0");
    nlm.algorithm.rangeSigma = 0.01;
    nlm.takes(&Nlm::spatialSigma, 32767);  // floor(log2) - 1 is 13: a height of 13 + 2
    nlm.refuses(&Nlm::spatialSigma, 1e6,
                " is 1e+06; with rangeSigma 0.01 the tree of manifolds has 20 levels, and at most 16 are allowed");
}

TEST(ValidationTest, ChecksTheGaussianFilter) {
    Valid<Gaussian> gaussian;
    const auto deviation = &Gaussian::standardDeviation;
    gaussian.refuses(deviation, {1, std::nan(""), 1}, ".y is nan; it must be a finite number of at least 0");
    gaussian.refuses(deviation, {1, 0, -1}, ".z is -1; it must be a finite number of at least 0");
    gaussian.takes(deviation, {0, 0, 0});
    gaussian.takes(deviation, {0, 16777215 / 6.0, 0});
    gaussian.refuses(deviation, {1, 1e12, 1},
                     ".y is 1e+12; with kernelSizeFactor 3 the kernel has 6e+12 coefficients, and at most 16777215 "
                     "are allowed");
    gaussian.refuses(&Gaussian::kernelSizeFactor, 0, " is 0; it must be a finite number above 0");
    gaussian.takes(&Gaussian::tileSize, {4, 4, 0});
    gaussian.algorithm.tilingMode = 1;
    gaussian.refuses(&Gaussian::tileSize, {4, 4, 0},
                     " is (4, 4, 0); with tilingMode 1 each component must be at least 1");
    gaussian.algorithm.kernelSizeFactor = 1e10;
    gaussian.refuses(deviation, {0, 0, 1e308},
                     ".z is 1e+308; with kernelSizeFactor 1e+10 the kernel has inf coefficients, and at most 16777215 "
                     "are allowed");

    HostImage asFloat(f32, {6, 5}), asDouble(f64, {6, 5}), asU16(u16, {6, 5});
    const auto output = &Gaussian::outputImage;
    Valid<Gaussian>().takes(output, &asFloat);
    Valid<Gaussian>(f64).takes(output, &asFloat);
    Valid<Gaussian>().refuses(output, &asU16, " is of type uint16; the type must be one of uint8, float32");
    Valid<Gaussian>(f32).refuses(output, &asDouble,
                                 " is of type float64; it must have the type of inputImage, float32");
}

TEST(ValidationTest, ChecksTheCrossCorrelation) {
    using Correlation = CudaCrossCorrelation2d;
    constexpr std::array taken{u8, u16, u32, s8, s16, s32, f32, f64};
    for (const VoxelTypes type : allVoxelTypes) {
        HostImage pattern(type, {6, 5}), scores(f32, {6, 5});
        Valid<Correlation> valid(type);
        valid.algorithm.inputTemplate = &pattern;
        valid.algorithm.outputImage = &scores;
        EXPECT_EQ(valid.refusal().empty(), std::ranges::find(taken, type) != taken.end()) << voxelTypeName(type);
    }
    HostImage pattern(u8, {6, 5}), wide(u8, {7, 1}), empty(u8, {0, 1}), deep(u8, {1, 1, 2}), scores(f32, {6, 5}),
        asU8(u8, {6, 5}), over(u8, {6, 5}, scores.data());
    Valid<Correlation> valid;
    valid.algorithm.outputImage = &scores;
    EXPECT_EQ(valid.refusal(), "inputTemplate is missing; an image is needed");
    valid.algorithm.inputTemplate = &pattern;
    const auto part = &Correlation::inputTemplate;
    valid.takes(part, &valid.input);
    valid.refuses(part, &wide, " is 7 x 1 x 1; it must be no larger than inputImage, 6 x 5 x 1");
    valid.refuses(part, &empty, " has 0 elements along x; an image must have at least 1");
    valid.refuses(part, &deep, " has 2 elements along z; a 2D algorithm takes 1; run it slice by slice");
    valid.refuses(part, &scores, " is of type float32; it must have the type of inputImage, uint8");
    valid.refuses(&Correlation::outputImage, &asU8, " is of type uint8; the type must be one of float32");
    valid.algorithm.inputTemplate = &over;
    EXPECT_EQ(valid.refusal(), "outputImage shares memory with inputTemplate; it must be another image");
    valid.algorithm.inputTemplate = &pattern;
    valid.takes(&Correlation::correlationMode, 7);
    valid.algorithm.tilingMode = 1;
    valid.refuses(&Correlation::tileSize, {4, 0}, " is (4, 0); with tilingMode 1 each component must be at least 1");
}

TEST(ValidationTest, ChecksTemplateAndMask) {
    HostImage mask(u8, {3, 3, 3}), spaced(u8, {3, 3, 3}), otherMask(u8, {3, 3, 2}), large(f32, {3, 9, 3});
    spaced.setSpacing(1, 2);
    ValidMatching valid({3, 3, 3});
    valid.takes(&Matching::inputMask, &mask);
    valid.refuses(&Matching::inputMask, &otherMask, " is 3 x 3 x 2; it must have the size of inputTemplate, 3 x 3 x 3");
    valid.refuses(&Matching::inputMask, &spaced,
                  " has the spacing 2 along axis 1; it must have that of inputTemplate, 1");
    valid.refuses(&Matching::inputTemplate, &large, " is 3 x 9 x 3; it must be no larger than inputImage, 8 x 8 x 8");
    valid.refuses(&Matching::outputIndexImage, &valid.score,
                  " is of type float32; the type must be one of uint8, uint16, uint32");

    HostImage filter(f32, {8, 8, 8}), indexAsMask(u16, {8, 8, 8}, valid.index.data());
    valid.algorithm.frequencyFilter = &filter;
    valid.refuses(&Matching::outputScoreImage, &filter,
                  " shares memory with frequencyFilter; it must be another image");
    valid.algorithm.inputTemplate = &valid.image;
    valid.algorithm.frequencyFilter = nullptr;
    valid.algorithm.inputMask = &indexAsMask;
    EXPECT_EQ(valid.refusal(), "outputIndexImage shares memory with inputMask; it must be another image");
}

TEST(ValidationTest, ChecksTheTableAndTheFilterOfItsLargestBox) {
    ValidMatching valid({2, 6, 3});
    using Column = tarnway::DataFrameView::Column;
    const auto tableOf = [](const Column& column) {
        return std::make_shared<const tarnway::DataFrameView>(std::vector<Column>{column});
    };
    const auto refuses = [&](const Column& column, const std::string& reason) {
        valid.refuses(&Matching::transformationTable, tableOf(column), reason);
    };
    refuses({"scaleX", {1, 0}}, " has scaleX 0 in row 1; a scale must be a finite number above 0");
    refuses({"phi", {std::nan("")}}, " has phi nan in row 0; an angle must be a finite number of radians");
    refuses({"Phi", {}}, " has a column \"Phi\"; the columns are phi, theta, psi, scaleX, scaleY and scaleZ");
    refuses({"scaleZ", {1e300}},
            " and the spacings make inputTemplate as large as 2 x 6 x 1000000000000000; at most "
            "2147483647 are allowed");

    // A quarter turn about z lays the 6 along x, where the filter needs one more.
    valid.algorithm.transformationTable = tableOf({"psi", {0, M_PI / 2}});
    HostImage fits(f32, {7, 6, 3}), narrow(f32, {6, 6, 3}), low(f32, {7, 5, 3});
    const std::string needed = "; it must be at least 7 x 6 x 3, the largest box of inputTemplate and one more along x";
    valid.takes(&Matching::frequencyFilter, &fits);
    valid.refuses(&Matching::frequencyFilter, &narrow, " is 6 x 6 x 3" + needed);
    valid.refuses(&Matching::frequencyFilter, &low, " is 7 x 5 x 3" + needed);
}

TEST(ValidationTest, FindsSharedMemoryHoweverItIsReached) {
    const auto expectShared = [](const ImageModel& input, ImageModel& output, bool shared = true) {
        Valid<Gaussian> gaussian;
        gaussian.algorithm.inputImage = &input;
        gaussian.algorithm.outputImage = &output;
        EXPECT_EQ(gaussian.refusal(),
                  shared ? "outputImage shares memory with inputImage; it must be another image" : "");
    };
    HostImage image(u8, {6, 5}), sameMemory(u8, {6, 5}, image.data());
    ImageModelSizeProxy whole = partOf(image, {}, {6, 5});
    ImageModelAdapter adapter(&whole, u8, DataConvertionTypes::cast);
    UsersImage users(image), usersToo(image);
    for (ImageModel* const output : std::initializer_list<ImageModel*>{&image, &sameMemory, &whole, &adapter, &users})
        expectShared(image, *output);
    expectShared(usersToo, users);
    Valid<Box> box;
    box.refuses(&Box::outputImage, &box.input, " shares memory with inputImage; it must be another image");

    // Parts of one image, and of two images over the same memory.
    HostImage large(u8, {12, 5}), sameLarge(u8, {12, 5}, large.data());
    for (HostImage* const other : {&large, &sameLarge}) {
        ImageModelSizeProxy right = partOf(*other, {6}, {6, 5}), middle = partOf(*other, {5}, {6, 5});
        expectShared(partOf(large, {}, {6, 5}), right, false);
        expectShared(partOf(large, {}, {6, 5}), middle);
    }

    // Images of another height or type, whose parts cannot be told apart by boxes.
    std::vector<std::uint8_t> buffer(6 * 9);
    HostImage above(u8, {6, 5}, buffer.data()), higher(u8, {6, 8}, buffer.data()), floats(f32, {1, 13}, buffer.data());
    ImageModelSizeProxy secondRow = partOf(higher, {0, 1}, {6, 2}), floatsBehind = partOf(floats, {0, 3}, {1, 5});
    expectShared(partOf(above, {}, {6, 2}), secondRow);
    expectShared(partOf(above, {2}, {1, 5}), floatsBehind);
    for (const auto& [row, shared] : {std::pair{4, true}, {5, false}}) {
        HostImage below(u8, {6, 4}, buffer.data() + 6 * row);
        expectShared(partOf(above, {0, 1}, {6, 4}), below, shared);
    }
}
