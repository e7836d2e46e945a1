// The filters as commands, on images whose results can be told by hand.

#include <gtest/gtest.h>

#include <cmath>

#include "ImageFiles/ImageFile.h"
#include "NpyBytes.h"
#include "Process.h"
#include "TemporaryFolder.h"
#include "TestImages.h"

namespace zel::test {

namespace {

constexpr std::size_t side = 7;

/// Two slices: a bright pixel in the middle of the first, a dark one at the left edge of the second.
std::vector<std::uint8_t> twoSlices() {
    std::vector<std::uint8_t> pixels(2 * side * side, 50);
    pixels[3 * side + 3] = 90;
    pixels[side * side + 3 * side] = 10;
    return pixels;
}

/// The slices with the pixels of a picture of each: '#' 90, 'o' 10, '.' 50.
std::vector<std::uint8_t> drawn(const std::string& picture) {
    std::vector<std::uint8_t> pixels;
    for (const char letter : picture) pixels.push_back(letter == '#' ? 90 : letter == 'o' ? 10 : 50);
    return pixels;
}

}  // namespace

class ProgramFiltersTest : public ::testing::Test {
protected:
    /// Runs the program with the arguments behind INPUT and OUTPUT, with all ways to lay and cut the images.
    template <typename T>
    void expectResult(const std::string& command, const std::vector<std::string>& parameters,
                      const std::vector<T>& expected) const {
        const std::vector<std::vector<std::string>> variants{
            {}, {"--placement", "device"}, {"--tile", "3,4"}, {"--tile=4,3,1", "--placement=device"}};
        for (const auto& variant : variants) {
            std::vector<std::string> arguments{command, "in.npy", "out.npy", "--quiet"};
            arguments.insert(arguments.end(), parameters.begin(), parameters.end());
            arguments.insert(arguments.end(), variant.begin(), variant.end());
            SCOPED_TRACE(::testing::PrintToString(arguments));
            const ProcessResult result = runZel(arguments, folder.path());
            ASSERT_EQ(result.exitCode, 0) << result.errors;
            EXPECT_EQ(readAll<T>(tool::readImageFile(folder / "out.npy")), expected);
        }
    }

    TemporaryFolder folder;
};

TEST_F(ProgramFiltersTest, MorphologyMovesWhatIsBrightAndDark) {
    folder.write("in.npy", npyBytes("|u1", shapeText({2, side, side}), rawBytes(twoSlices())));
    const auto expect = [&](const std::string& command, const std::string& shape, const std::string& pictures) {
        expectResult(command, {"--radius", "2", "--neighborhood", shape}, drawn(pictures));
    };
    const auto grey = std::string(side * side, '.');
    const std::string brightSquare =
        "......."
        ".#####."
        ".#####."
        ".#####."
        ".#####."
        ".#####."
        ".......";
    const std::string darkDiamond =
        "......."
        "o......"
        "oo....."
        "ooo...."
        "oo....."
        "o......"
        ".......";
    const std::string brightPixel = grey.substr(0, 3 * side + 3) + '#' + grey.substr(3 * side + 4);
    const std::string darkPixel = grey.substr(0, 3 * side) + 'o' + grey.substr(3 * side + 1);
    expect("dilation", "square", brightSquare + grey);
    expect("erosion", "diamond", grey + darkDiamond);
    expect("opening", "diamond", grey + darkPixel);
    expect("closing", "square", brightPixel + grey);
}

// One bright voxel in a volume: what is left of it are the kernel's own coefficients.
TEST_F(ProgramFiltersTest, GaussianSpreadsAlongTheAxesWithASigma) {
    constexpr std::size_t depth = 5;
    std::vector<std::uint16_t> voxels(side * side * depth);
    const std::size_t centre = (2 * side + 3) * side + 3;
    voxels[centre] = 30000;
    folder.write("in.npy", npyBytes("<u2", shapeText({depth, side, side}), rawBytes(voxels)));

    // Of size ceil(2 * 1.5 * 0.8) = 3 along z: 1 between twice exp(-1 / (2 * 0.8^2)), divided by their sum.
    const double outer = std::exp(-1 / (2 * 0.8 * 0.8));
    const double sum = 1 + 2 * outer;
    std::vector<std::uint16_t> truncated(voxels.size());
    truncated[centre] = static_cast<std::uint16_t>(30000 / sum);
    truncated[centre - side * side] = truncated[centre + side * side] = static_cast<std::uint16_t>(30000 * outer / sum);
    const std::vector<std::string> parameters{"--sigma", "0,0,0.8", "--kernel-size-factor", "1.5"};
    expectResult("gaussian-filter", parameters, truncated);

    std::vector<std::string> asFloat = parameters;
    asFloat.insert(asFloat.end(), {"--output-type", "float32", "--placement", "device", "--quiet"});
    asFloat.insert(asFloat.begin(), {"gaussian-filter", "in.npy", "out.npy"});
    ASSERT_EQ(runZel(asFloat, folder.path()).exitCode, 0);
    EXPECT_FLOAT_EQ(readAll<float>(tool::readImageFile(folder / "out.npy"))[centre - side * side],
                    static_cast<float>(30000 * outer / sum));
}

// Diagonally beside the bright pixel 90 * 0.1065 * 0.1065 = 1.02 arrives, but only 0.96 when the 9.6 between the axes
// lose their fraction.
TEST_F(ProgramFiltersTest, GaussianTruncatesBetweenTheAxesWhenAsked) {
    std::vector<std::uint8_t> pixels(9);
    pixels[4] = 90;
    folder.write("in.npy", npyBytes("|u1", shapeText({3, 3}), rawBytes(pixels)));
    expectResult<std::uint8_t>("gaussian-filter", {"--sigma", "0.5,0.5,0"}, {1, 7, 1, 7, 55, 7, 1, 7, 1});
    expectResult<std::uint8_t>("gaussian-filter", {"--sigma", "0.5,0.5,0", "--voxel-type-intermediate"},
                               {0, 7, 0, 7, 55, 7, 0, 7, 0});
}

}  // namespace zel::test
