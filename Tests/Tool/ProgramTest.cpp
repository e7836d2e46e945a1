#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "ImageFiles/ImageFile.h"
#include "Messages.h"
#include "NpyBytes.h"
#include "Process.h"
#include "TemporaryFolder.h"
#include "TestImages.h"

namespace zel::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

constexpr int width = 37, height = 23, depth = 3;
constexpr int kernelX = 5, kernelY = 4;

/// The mean over the rectangle around each pixel, straight from its definition.
std::vector<std::uint8_t> meanOf(const std::vector<std::uint8_t>& image) {
    std::vector<std::uint8_t> result;
    for (int z = 0; z < depth; ++z) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int sum = 0;
                for (int j = 0; j < kernelY; ++j) {
                    for (int i = 0; i < kernelX; ++i) {
                        const int column = std::clamp(x - kernelX / 2 + i, 0, width - 1);
                        const int row = std::clamp(y - kernelY / 2 + j, 0, height - 1);
                        sum += image[static_cast<std::size_t>((z * height + row) * width + column)];
                    }
                }
                result.push_back(static_cast<std::uint8_t>(sum / (kernelX * kernelY)));
            }
        }
    }
    return result;
}

/// One line that begins with the program's name.
void expectOneErrorLine(const ProcessResult& result) {
    EXPECT_THAT(result.errors, StartsWith("zel: "));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
}

}  // namespace

class ProgramTest : public ::testing::Test {
protected:
    ProgramTest() {
        for (int i = 0; i < width * height * depth; ++i) pixels.push_back(static_cast<std::uint8_t>(i * i % 251));
        volume = npyBytes("|u1", shapeText({depth, height, width}), rawBytes(pixels));
        folder.write("in.npy", volume);
    }

    ProcessResult zel(const std::vector<std::string>& arguments) const { return runZel(arguments, folder.path()); }
    std::vector<std::uint8_t> outputPixels(const std::string& name) const {
        return readAll<std::uint8_t>(tool::readImageFile(folder / name));
    }

    TemporaryFolder folder;
    std::vector<std::uint8_t> pixels;
    std::string volume;
};

TEST_F(ProgramTest, BoxFilterIsTheMeanWhereverTheImageLies) {
    const std::vector<std::uint8_t> expected = meanOf(pixels);
    const std::vector<std::vector<std::string>> variants{
        {}, {"--placement", "device"}, {"--tile", "11,9"}, {"--tile=11,9", "--placement=device", "--threads", "1"}};
    for (const auto& variant : variants) {
        std::vector<std::string> arguments{"box-filter", "in.npy", "out.npy", "--kernel", "5,4", "--quiet"};
        arguments.insert(arguments.end(), variant.begin(), variant.end());
        const ProcessResult result = zel(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output + result.errors, "");
        EXPECT_EQ(outputPixels("out.npy"), expected) << ::testing::PrintToString(variant);
    }
    EXPECT_THAT(folder.names(), ElementsAre("in.npy", "out.npy"));
}

TEST_F(ProgramTest, SameFileInAndOut) {
    EXPECT_EQ(zel({"box-filter", "in.npy", "in.npy", "--kernel", "5,4"}).exitCode, 0);
    EXPECT_EQ(outputPixels("in.npy"), meanOf(pixels));
}

TEST_F(ProgramTest, JsonTellsWhatWasDone) {
    const ProcessResult result = zel({"box-filter", "in.npy", "out.npy", "--kernel", "3,3", "--json"});
    ASSERT_EQ(result.exitCode, 0);
    const auto json = nlohmann::json::parse(result.output);
    EXPECT_EQ(json["algorithm"], "box-filter");
    EXPECT_EQ(json["input"], "in.npy");
    EXPECT_EQ(json["output"], "out.npy");
    EXPECT_EQ(json["size"], nlohmann::json({width, height, depth}));
    EXPECT_EQ(json["type"], "uint8");
    EXPECT_GT(json["seconds"], 0);
    EXPECT_GE(json["steps"], depth);
}

TEST_F(ProgramTest, WrongUsageIsOneLineAndNothingIsDone) {
    struct Case {
        std::vector<std::string> arguments;
        int exitCode;
        const char* text;
    };
    const Case cases[] = {
        {{}, 2, "(see zel --help)"},
        {{"blur", "in.npy"}, 2, "'blur' is none of its commands box-filter, "},
        {{"box-filter", "in.npy", "out.npy"}, 2, "--kernel is required (see zel box-filter --help)"},
        {{"box-filter", "in.npy", "--kernel", "3,3"}, 2, "OUTPUT is required"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "9"},
         2,
         "--kernel is '9', but takes two whole numbers from 1"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "-1,3"}, 2, "--kernel is '-1,3', but takes"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "9,9", "--size", "3"}, 2, "--size"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "9,9", "--placement", "moon"},
         2,
         "--placement is 'moon', but takes host or device"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "9,9", "--tile", "8"}, 2, "--tile is '8'"},
        {{"convert", "in.npy", "out.npy", "--type", "float16"}, 2, "--type is 'float16', but takes one of uint8, "},
        {{"box-filter", "gone.npy", "out.npy", "--kernel", "0,3"},
         2,
         "--kernel is '0,3', but takes two whole numbers from 1 to 2147483647, such as 3,3"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "3,3", "--tile", "0,8"},
         2,
         "--tile is '0,8', but takes two or"},
        {{"box-filter", "in.npy", "out.npy", "--kernel", "3,3", "--device", "7"}, 1, "there is no device 7"},
        {{"erosion", "in.npy", "out.npy", "--radius", "2", "--neighborhood", "disk"},
         2,
         "--neighborhood is 'disk', but takes square or diamond"},
        {{"opening", "in.npy", "out.npy", "--radius", "2"}, 2, "--neighborhood is required"},
        {{"closing", "in.npy", "out.npy", "--radius", "0", "--neighborhood", "square"}, 2, "--radius is '0', but"},
        {{"gaussian-filter", "in.npy", "out.npy", "--sigma", "1"}, 2, "--sigma is '1', but takes three numbers"},
        {{"gaussian-filter", "in.npy", "out.npy", "--sigma", "1,-0.5,1"}, 2, "--sigma is '1,-0.5,1', but"},
        {{"gaussian-filter", "in.npy", "out.npy", "--sigma", "1,1,1", "--kernel-size-factor", "0"},
         2,
         "--kernel-size-factor is '0', but takes a number above 0"},
        {{"gaussian-filter", "in.npy", "out.npy", "--sigma", "1e9,1,1"}, 1, "standardDeviation.x is 1e+09"},
        {{"gaussian-filter", "in.npy", "out.npy", "--sigma", "1,1,1", "--output-type", "half"},
         2,
         "--output-type is 'half', but takes one of uint8, "},
        {{"gaussian-filter", "in.npy", "out.npy", "--sigma", "1,1,1", "--output-type", "int16"},
         1,
         "outputImage is of type int16; the type must be one of uint8, float32"},
        {{"box-filter", "gone.npy", "out.npy", "--kernel", "3,3"}, 1, "cannot read gone.npy: no such file"},
        {{"box-filter", "gone.npy", "out.gif", "--kernel", "3,3"}, 1, "cannot write out.gif: the name has to end in"},
        {{"box-filter", "gone.npy", "no/out.npy", "--kernel", "3,3"}, 1, "cannot write no/out.npy: folder no: no such"},
        {{"box-filter", "in.npy", "out.png", "--kernel", "3,3"}, 1, "PNG holds one slice, the image has 3"},
        {{"convert", "in.npy", "out.png", "--type", "float32"}, 1, "the image is float32"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.arguments));
        const ProcessResult result = zel(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, HasSubstr(c.text));
        expectOneErrorLine(result);
    }
    EXPECT_THAT(folder.names(), ElementsAre("in.npy"));
}

TEST_F(ProgramTest, HelpAndVersion) {
    const ProcessResult version = zel({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.output, StartsWith("zel "));
    const ProcessResult help = zel({"box-filter", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* const text : {"INPUT", "OUTPUT", "--kernel", "--tile", "--placement", "--device", "--threads"}) {
        EXPECT_THAT(help.output, HasSubstr(text));
    }
}

TEST_F(ProgramTest, AFullDiskLeavesTheOldOutput) {
    folder.write("out.npy", "old");
    const ProcessResult result = runZel({"box-filter", "in.npy", "out.npy", "--kernel", "3,3"}, folder.path(), 1000);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("cannot write out.npy: file too large"));
    expectOneErrorLine(result);
    EXPECT_EQ(folder.read("out.npy"), "old");
    EXPECT_THAT(folder.names(), ElementsAre("in.npy", "out.npy"));
}

TEST_F(ProgramTest, InfoTellsOfAllFilesThatCanBeRead) {
    const float values[] = {-1.5F, std::nanf(""), 0.1F, 7};
    std::string bytes(sizeof values, '\0');
    std::memcpy(bytes.data(), values, sizeof values);
    folder.write("f.npy", npyBytes("<f4", "(2, 2)", bytes));
    const ProcessResult result = zel({"info", "in.npy", "gone.npy", "f.npy"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output,
              "in.npy: NPY, 37 x 23 x 3, uint8, spacing 1 x 1 x 1, range 0 to 249\n"
              "f.npy: NPY, 2 x 2, float32, spacing 1 x 1, range -1.5 to 7\n");
    expectOneErrorLine(result);

    const auto json = nlohmann::json::parse(zel({"info", "--json", "f.npy"}).output);
    EXPECT_EQ(json["images"][0]["size"], nlohmann::json({2, 2}));
    EXPECT_EQ(json["images"][0]["minimum"], -1.5);
    EXPECT_EQ(json["images"][0]["maximum"], 7);
}

TEST_F(ProgramTest, ConvertChangesFormatAndType) {
    folder.write("f.npy", npyBytes("<f8", "(1, 4)", rawBytes(std::vector<double>{-3, 2.5, 65534.7, 1e9})));
    ASSERT_EQ(zel({"convert", "f.npy", "f.png", "--type", "uint16", "--quiet"}).exitCode, 0);
    EXPECT_EQ(readAll<std::uint16_t>(tool::readImageFile(folder / "f.png")),
              (std::vector<std::uint16_t>{0, 2, 65535, 65535}));
}

TEST_F(ProgramTest, VolumesAndTheirSpacingGoThroughAllFormats) {
    HostImage image = randomImage<std::int16_t>({7, 5, 3}, 1);
    for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, 0.1 * (axis + 1));
    tool::writeImageFile(folder / "a.mrc", image);
    for (const auto& [from, to] : {std::pair{"a.mrc", "b.tif"}, {"b.tif", "c.map"}, {"c.map", "d.tiff"}}) {
        ASSERT_EQ(zel({"convert", from, to, "--quiet"}).exitCode, 0);
        EXPECT_EQ(readAll<std::int16_t>(tool::readImageFile(folder / to)), readAll<std::int16_t>(image));
        EXPECT_THAT(zel({"info", to}).output, HasSubstr(", 7 x 5 x 3, int16, spacing 0.1 x 0.2 x 0.3, range "));
    }
    EXPECT_THAT(zel({"convert", "in.npy", "e.mrc"}).errors, HasSubstr("with zel convert --type int16"));
}

TEST_F(ProgramTest, DemoWritesWhatItsTableNames) {
    const ProcessResult result = zel({"demo", "new/demo"});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("box-filter"));
    const HostImage input = tool::readImageFile(folder / "new/demo/input.png");
    EXPECT_EQ(input.getDimension(0), 512U);
    EXPECT_NE(readAll<std::uint8_t>(tool::readImageFile(folder / "new/demo/box-filter.png")),
              readAll<std::uint8_t>(input));
    const HostImage volumeOut = tool::readImageFile(folder / "new/demo/volume-box-filter.tif");
    EXPECT_EQ(volumeOut.getDimension(2), 48U);
    EXPECT_NE(readAll<std::uint8_t>(tool::readImageFile(folder / "new/demo/erosion-square.png")),
              readAll<std::uint8_t>(tool::readImageFile(folder / "new/demo/erosion-diamond.png")));
    EXPECT_EQ(tool::readImageFile(folder / "new/demo/contact-sheet.png").getDimension(0), 16U + 4 * 272);
}

}  // namespace zel::test
