// The filters as commands, on images whose results can be worked out by hand.

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "ImageFiles/ImageFile.h"
#include "ProgramTest.h"
#include "TestImages.h"

namespace zel::test {

class FilterCommandTest : public ProgramTest {
protected:
    using Bytes = std::vector<std::uint8_t>;

    /// Two slices of 7 x 5: a bright pixel in the middle of the first, a dark one at the left edge of the second.
    FilterCommandTest() {
        bright[2 * 7 + 3] = '#';
        dark[2 * 7] = 'o';
        folder.write("in.npy", npyBytes("|u1", "(2, 5, 7)", rawBytes(drawn(bright + dark))));
    }

    /// The voxels of a picture: '#' 90, 'o' 10, '.' 50.
    static Bytes drawn(const std::string& picture) {
        Bytes voxels;
        for (const char letter : picture) voxels.push_back(letter == '#' ? 90 : letter == 'o' ? 10 : 50);
        return voxels;
    }
    static std::string fiveRows(const std::string& row) { return row + row + row + row + row; }
    template <typename T>
    std::vector<T> voxelsOf(const std::string& name) const {
        return readAll<T>(tool::readImageFile(folder / name));
    }

    /// Runs the filter on in.npy, with its images in each place, whole and in tiles.
    template <typename T>
    void expectResult(const std::string& command, const std::vector<T>& expected) const {
        for (const char* const variant : {"", "--placement host", "--placement device --threads 1", "--tile 3,4",
                                          "--tile 3,4 --placement host", "--tile=4,3,1 --placement=device"}) {
            SCOPED_TRACE(command + " " + variant);
            const ProgramResult result = zel(command + " in.npy out.npy --quiet " + variant);
            EXPECT_EQ(result.output + result.errors, "");
            ASSERT_EQ(result.exitCode, 0);
            EXPECT_EQ(voxelsOf<T>("out.npy"), expected);
        }
        EXPECT_THAT(folder.names(), ElementsAre("in.npy", "out.npy"));
    }

    const std::string grey = fiveRows(".......");
    std::string bright = grey, dark = grey;
};

// The edge pixel is repeated: of the dark one's row, the left pixels get three, two and one of five.
TEST_F(FilterCommandTest, BoxFilterAveragesARectangle) {
    Bytes expected(2 * 5 * 7, 50);
    for (const std::size_t x : {1, 2, 3, 4, 5}) expected[2 * 7 + x] = (90 + 4 * 50) / 5;
    for (const int x : {0, 1, 2}) expected[static_cast<std::size_t>(7 * 7 + x)] = static_cast<std::uint8_t>(26 + 8 * x);
    expectResult("box-filter --kernel 5,1", expected);
    // As two volumes of one slice.
    folder.write("in.npy", npyBytes("|u1", "(2, 1, 5, 7)", rawBytes(drawn(bright + dark))));
    expectResult("box-filter --kernel 5,1", expected);
}

// Mirrored at the edge, the dark pixel has itself but once in its window.
TEST_F(FilterCommandTest, MedianFilterRemovesLonePixels) {
    expectResult("median-filter --radius 1", drawn(grey + grey));
    const std::string stripe = "o......", narrow = "oo.....";
    folder.write("in.npy", npyBytes("|u1", "(2, 5, 7)", rawBytes(drawn(fiveRows(stripe) + fiveRows(narrow)))));
    expectResult("median-filter --radius 1", drawn(grey + fiveRows(narrow)));
}

TEST_F(FilterCommandTest, MorphologyMovesWhatIsBrightAndDark) {
    const std::string diamond = "o......oo.....ooo....oo.....o......";
    expectResult("dilation --radius 2 --neighborhood square", drawn(fiveRows(".#####.") + grey));
    expectResult("closing --radius 2 --neighborhood square", drawn(fiveRows("...#...") + grey));
    expectResult("erosion --radius 2 --neighborhood diamond", drawn(grey + diamond));
    expectResult("opening --radius 2 --neighborhood diamond", drawn(grey + dark));
}

// The kernel has size ceil(2 * 1.5 * 0.8) = 3: 1 between twice exp(-1 / (2 * 0.8^2)), divided by their sum.
TEST_F(FilterCommandTest, GaussianSpreadsAlongTheAxesWithASigma) {
    const double outer = std::exp(-1 / (2 * 0.8 * 0.8)), sum = 1 + 2 * outer, expected = 30000 * outer / sum;
    const auto beside = static_cast<std::uint16_t>(expected), centre = static_cast<std::uint16_t>(30000 / sum);
    folder.write("in.npy", npyBytes("<u2", "(5, 1, 1)", rawBytes(std::vector<std::uint16_t>{0, 0, 30000, 0, 0})));
    const std::string filter = "gaussian-filter --sigma 0,0,0.8 --kernel-size-factor 1.5";
    expectResult(filter, std::vector<std::uint16_t>{0, beside, centre, beside, 0});

    ASSERT_EQ(zel(filter + " in.npy out.npy --output-type float32 --placement device").exitCode, 0);
    EXPECT_FLOAT_EQ(voxelsOf<float>("out.npy")[1], static_cast<float>(expected));
}

// Diagonally beside the bright pixel 90 * 0.1065 * 0.1065 = 1.02 arrives, but only 0.96 when the 9.6 between the axes
// lose their fraction.
TEST_F(FilterCommandTest, GaussianTruncatesBetweenTheAxesWhenAsked) {
    folder.write("in.npy", npyBytes("|u1", "(3, 3)", rawBytes(Bytes{0, 0, 0, 0, 90, 0, 0, 0, 0})));
    const std::string filter = "gaussian-filter --sigma 0.5,0.5,0";
    expectResult(filter, Bytes{1, 7, 1, 7, 55, 7, 1, 7, 1});
    expectResult(filter + " --voxel-type-intermediate", Bytes{0, 7, 0, 7, 55, 7, 0, 7, 0});
}

TEST_F(FilterCommandTest, NonLocalMeansDependsOnItsSeedAlone) {
    folder.write("in.npy", npyBytes("<u2", "(2, 12, 20)",
                                    rawBytes(readAll<std::uint16_t>(randomImage<std::uint16_t>({20, 12, 2}, 4)))));
    const auto result = [this](const std::string& options) {
        EXPECT_EQ(zel("non-local-means in.npy out.npy --output-type float32 --quiet " + options).exitCode, 0);
        return folder.read("out.npy");
    };
    const std::string withoutSeed = result("");
    EXPECT_TRUE(result("--seed 1 --threads 1 --placement device") == withoutSeed);
    EXPECT_FALSE(result("--seed 2") == withoutSeed);
    expectOneErrorLine(zel("non-local-means in.npy out.npy --range-sigma 0"), 2, "--range-sigma is '0'");
    EXPECT_EQ(zel("non-local-means in.npy out.npy --tile 4,4").exitCode, 2) << "it cuts its blocks itself";
}

TEST_F(FilterCommandTest, JsonReportsWhatWasDone) {
    const auto report = [this](const std::string& options) {
        return nlohmann::json::parse(zel("box-filter in.npy out.npy --kernel 3,3 --json " + options).output);
    };
    auto json = report("--placement host");
    for (const char* const key : {"seconds", "readSeconds", "writeSeconds"}) EXPECT_GT(json[key], 0) << key;
    EXPECT_GT(report("--tile 4,4 --placement host")["steps"], json["steps"]);
    for (const char* const key : {"seconds", "readSeconds", "writeSeconds"}) json.erase(key);
    EXPECT_EQ(json.dump(), R"({"algorithm":"box-filter","input":"in.npy","output":"out.npy","placement":"host",)"
                           R"("size":[7,5,2],"steps":6,"type":"uint8"})")
        << "three steps for each slice";
    EXPECT_EQ(report("")["placement"], "in-place");
    EXPECT_EQ(report("")["steps"], 2) << "without copies";
    EXPECT_EQ(report("--placement device")["placement"], "device");
    EXPECT_THAT(zel("box-filter in.npy out.npy --kernel 3").output,
                testing::ContainsRegex("^out.npy: 7 x 5 x 2, uint8; read [^ ]+ s, ran [^ ]+ s, wrote [^ ]+ s\n$"));
}

// Two images of 1.5 MiB do not fit in 2 MiB; tiles of 1000 x 768 do.
TEST_F(FilterCommandTest, TilesAreChosenForTheDevicesMemory) {
    folder.write("large.npy", npyBytes("|u1", "(1536, 1000)", std::string(1536 * 1000, 'v')));
    const std::string anywhere = "box-filter large.npy out.npy --kernel 3 ", filter = anywhere + "--placement host ",
                      small = "export ZEL_HOST_DEVICE_MIB=2; ";
    expectOneErrorLine(zel(filter, small), 1,
                       "the run needs 2.93 MiB of device memory, and 2 MiB of 2 MiB are free; --tile 1000,768 fits");
    const auto plan = nlohmann::json::parse(zel(filter + "--tile auto --plan --json", small).output);
    EXPECT_EQ(plan["tileSize"], nlohmann::json::parse("[1000,768]"));
    EXPECT_EQ(plan["peakBytes"], 2 * 1000 * 768);
    EXPECT_THAT(folder.names(), ElementsAre("in.npy", "large.npy"));
    EXPECT_EQ(nlohmann::json::parse(zel(filter + "--tile auto --json", small).output)["steps"], plan["steps"]);
    expectOneErrorLine(zel(anywhere + "--placement device", small), 1, "needs 1.46 MiB of device memory");
    EXPECT_THAT(zel(anywhere + "--plan", small).output, HasSubstr(" 0 bytes of device memory at the most"));
    EXPECT_EQ(zel(anywhere + "--quiet", small).exitCode, 0) << "in place they need not fit";
    EXPECT_THAT(zel("devices", small).output, HasSubstr("2 MiB free of 2 MiB; uses images in the host's memory in"));
    expectOneErrorLine(zel("devices", "export ZEL_HOST_DEVICES=0; "), 1, "there is no device for it; set");
}

TEST_F(FilterCommandTest, FiltersSeveralFilesIntoAFolder) {
    std::filesystem::create_directories(folder / "out");
    folder.write("coarse.mrc", "no image");
    tool::writeImageFile(folder / "b.tif", [&] {
        HostImage image = tool::readImageFile(folder / "in.npy");
        image.setSpacing(0, 2);
        return image;
    }());
    const std::string filter = "gaussian-filter in.npy coarse.mrc b.tif out --sigma 2,0,0 --physical";
    expectOneErrorLine(zel(filter + " --quiet"), 1, "coarse.mrc");
    for (const auto& [name, sigma] : {std::pair{"in.npy", "2,0,0"}, std::pair{"b.tif", "1,0,0"}}) {
        ASSERT_EQ(zel("gaussian-filter in.npy alone.npy --sigma " + std::string(sigma)).exitCode, 0);
        EXPECT_EQ(voxelsOf<std::uint8_t>(std::string("out/") + name), voxelsOf<std::uint8_t>("alone.npy")) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "out/coarse.mrc"));
    folder.write("even.npy", npyBytes("|u1", "(8, 8)", std::string(64, 'v')));
    expectOneErrorLine(zel("non-local-means even.npy in.npy out --quiet"), 1, "even.npy: Eigenvectors");
    EXPECT_EQ(zel("non-local-means in.npy alone.npy").exitCode, 0);
    EXPECT_EQ(voxelsOf<std::uint8_t>("out/in.npy"), voxelsOf<std::uint8_t>("alone.npy"));
    expectOneErrorLine(zel("median-filter in.npy out/in.npy out --radius 1"), 2,
                       "two results are the same file, out/in.npy");
    expectOneErrorLine(zel("median-filter in.npy b.tif o.npy --radius 1"), 2,
                       "OUTPUT is 'o.npy', but takes a folder that");
    expectOneErrorLine(zel("median-filter in.npy none/ --radius 1"), 2, "takes a folder that exists");
    expectOneErrorLine(zel("median-filter in.npy - out --radius 1"), 2, "standard input has no name for a file in out");
}

TEST_F(FilterCommandTest, ReplacesFilesOnlyByCompleteOnes) {
    folder.write("out.tif", "old");
    folder.write("large.npy", npyBytes("|u1", "(50, 50)", std::string(2500, 'v')));
    expectOneErrorLine(zel("box-filter large.npy out.tif --kernel 3,3", "ulimit -f 1; "), 1, "out.tif: file too large");
    EXPECT_EQ(folder.read("out.tif"), "old");
    EXPECT_THAT(folder.names(), ElementsAre("in.npy", "large.npy", "out.tif"));
    ASSERT_EQ(zel("dilation in.npy in.npy --radius 9 --neighborhood square").exitCode, 0);
    EXPECT_EQ(voxelsOf<std::uint8_t>("in.npy"), drawn(fiveRows("#######") + grey));
}

}  // namespace zel::test
