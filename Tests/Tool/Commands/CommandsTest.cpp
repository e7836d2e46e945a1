// The commands that are not filters.

#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

#include "ImageFiles/ImageFile.h"
#include "ProgramTest.h"
#include "TestImages.h"

namespace zel::test {

class CommandsTest : public ProgramTest {
protected:
    HostImage image(const std::string& name) const { return tool::readImageFile(folder / name); }
};

TEST_F(CommandsTest, InfoShowsAllFilesThatCanBeRead) {
    const std::vector<float> values{std::nanf(""), -1.5F, 0.1F, 7};
    folder.write("f.npy", npyBytes("<f4", "(2, 2)", rawBytes(values)));
    folder.write("v.npy", npyBytes("|u1", "(3, 1, 2)", "abcdef"));
    folder.write("c.npy", npyBytes("<c8", "(1, 2)", rawBytes(values) + rawBytes(values)));
    const ProgramResult result = zel("info v.npy gone.npy f.npy c.npy");
    EXPECT_EQ(result.output,
              "v.npy: NPY, 2 x 1 x 3, uint8, spacing 1 x 1 x 1, range 97 to 102\n"
              "f.npy: NPY, 2 x 2, float32, spacing 1 x 1, range -1.5 to 7\n"
              "c.npy: NPY, 2 x 1, complex64, spacing 1 x 1\n");
    expectOneErrorLine({result.exitCode, "", result.errors}, 1, "cannot read gone.npy");
    EXPECT_THAT(zel("info --json f.npy").output,
                StartsWith(R"({"images":[{"file":"f.npy","format":"NPY","size":[2,2],"type":"float32","spacing":[1.0,)"
                           R"(1.0,1.0],"unit":"","minimum":-1.5,"maximum":7.0,"notes":[]}]})"));
    folder.write("i.npy", npyBytes("<f4", "(1, 2)", rawBytes(std::vector<float>{-HUGE_VALF, 1})));
    EXPECT_THAT(zel("info --json i.npy").output, HasSubstr(R"("minimum":"-inf","maximum":1.0)"));
}

TEST_F(CommandsTest, ConvertChangesFormatAndType) {
    folder.write("f.npy", npyBytes("<f8", "(1, 4)", rawBytes(std::vector<double>{-3, 2.5, 65534.7, 1e9})));
    ASSERT_EQ(zel("convert f.npy f.png --type uint16 --quiet").exitCode, 0);
    EXPECT_EQ(readAll<std::uint16_t>(image("f.png")), (std::vector<std::uint16_t>{0, 2, 65535, 65535}));
    expectOneErrorLine(zel("convert f.png g.mrc --type uint8"), 1, "with zel convert --type int16");
}

TEST_F(CommandsTest, ADashIsStandardInputAndOutput) {
    folder.write("v.npy", npyBytes("|u1", "(3, 1, 2)", "abcdef"));
    const ProgramResult both = zel("box-filter - - --kernel 1 --json", "cat v.npy | ");
    EXPECT_THAT(both.errors, StartsWith(R"({"algorithm":"box-filter","input":"-","output":"-",)"));
    ASSERT_EQ(zel("convert v.npy w.npy --quiet").exitCode, 0);
    EXPECT_EQ(both.output, folder.read("w.npy"));
    EXPECT_THAT(zel("info - <w.npy").output, StartsWith("-: NPY, 2 x 1 x 3, uint8,"));
    expectOneErrorLine(zel("cross-correlation - - out.npy <w.npy"), 1,
                       "read standard input: it is read for another im");
    expectOneErrorLine(zel("convert - a.npy", "echo text | "), 1, "standard input: by its content it is none of NPY");
}

TEST_F(CommandsTest, TiffIsCompressedWhenAsked) {
    const std::string plain(std::size_t{200} * 100 * 4, 'v');
    for (const std::string type : {"|u1", "<u2", "<f4"}) {
        const std::size_t bytes = plain.size() / 4 * (type[2] - '0');
        folder.write("v.npy", npyBytes(type, "(1, 100, 200)", plain.substr(0, bytes)));
        for (const std::string scheme : {"none", "deflate", "zstd"}) {
            ASSERT_EQ(zel("median-filter v.npy a.tif --radius 1 --compression " + scheme).exitCode, 0);
            EXPECT_EQ(std::filesystem::file_size(folder / "a.tif") < bytes / 4, scheme != "none") << type << scheme;
            const HostImage copy = image("a.tif");
            EXPECT_EQ(std::string(static_cast<const char*>(copy.data()), copy.extentBytes()), plain.substr(0, bytes));
        }
    }
    expectOneErrorLine(zel("convert gone.npy a.npy --compression zstd"), 2, "is for TIFF outputs, such as out.tif; a");
}

TEST_F(CommandsTest, VolumesAndTheirSpacingGoThroughAllFormatsAndFilters) {
    HostImage volume = randomImage<std::int16_t>({7, 5, 3}, 1);
    for (int axis = 0; axis < 3; ++axis) volume.setSpacing(axis, 0.1 * (axis + 1));
    tool::writeImageFile(folder / "a.mrc", volume);
    for (const std::string run :
         {"convert a.mrc b.tif", "convert b.tif c.map", "box-filter c.map d.tif --kernel 1,1"}) {
        ASSERT_EQ(zel(run).exitCode, 0);
    }
    EXPECT_EQ(readAll<std::int16_t>(image("d.tif")), readAll<std::int16_t>(volume));
    zel("gaussian-filter a.mrc e.npy --sigma 0.1,0.1,0.15 --physical --placement device");
    zel("gaussian-filter a.mrc f.npy --sigma 1,0.5,0.5");
    EXPECT_EQ(folder.read("e.npy"), folder.read("f.npy"));
    EXPECT_THAT(zel("info d.tif").output, HasSubstr(", 7 x 5 x 3, int16, spacing 0.1 x 0.2 x 0.3 angstrom, range "));
}

// Its cases are command lines, so that the commands have to write the same files.
TEST_F(CommandsTest, DemoWritesWhatItsCommandLinesWrite) {
    const auto demo = nlohmann::json::parse(zel("demo new/demo --json").output);
    std::string input;
    std::set<std::string> differentFiles;
    for (const auto& row : demo["results"]) {
        const std::string command = row["algorithm"], parameters = row["parameters"], file = row["file"];
        differentFiles.insert(folder.read(file));
        if (command.empty()) {
            input = file;
            continue;
        }
        SCOPED_TRACE(row.dump());
        const std::string output = "out" + file.substr(file.find('.')), searched = row.value("template", "");
        const std::string more = row.contains("index") ? " index.npy " : " ";
        ASSERT_EQ(zel(command + " " + input + " " + searched + " " + output + more + parameters).exitCode, 0);
        EXPECT_TRUE(folder.read(file) == folder.read(output));
    }
    EXPECT_EQ(differentFiles.size(), demo["results"].size());
    EXPECT_EQ(image("new/demo/input.png").getDimension(0), 512U);
    EXPECT_EQ(image("new/demo/volume-box-filter.tif").getDimension(2), 48U);
    EXPECT_EQ(image(demo["contactSheet"]).getDimension(0), 16U + 4 * 272);
    EXPECT_THAT(zel("demo").output, HasSubstr("--radius 5 --neighborhood diamond"));
}

}  // namespace zel::test
