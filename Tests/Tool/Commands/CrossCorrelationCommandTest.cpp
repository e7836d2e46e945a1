// The search for a template as a command.

#include <nlohmann/json.hpp>

#include "ImageFiles/ImageFile.h"
#include "ProgramTest.h"
#include "TestImages.h"

namespace zel::test {

class CrossCorrelationCommandTest : public ProgramTest {
protected:
    /// Random pixels, and the 4 x 3 of them at (7, 5), whose anchor is at (8, 6).
    CrossCorrelationCommandTest() {
        tool::writeImageFile(folder / "in.png", image);
        HostImage part(VoxelTypes::uint8, {4, 3});
        copyRows(partOf(image, {7, 5}, {4, 3}), part);
        tool::writeImageFile(folder / "part.png", part);
    }

    HostImage image = randomImage<std::uint8_t>({16, 12}, 3);
};

TEST_F(CrossCorrelationCommandTest, FindsATemplateAndMarksIt) {
    for (const char* const variant : {"", "--placement device --threads 1", "--tile 9,9"}) {
        SCOPED_TRACE(variant);
        const std::string command = "cross-correlation in.png part.png out.npy --mode mean-removed --json ";
        const auto result =
            nlohmann::json::parse(zel(command + "--measurement found.json --mark marked.png " + variant).output);
        const auto found = nlohmann::json::parse(folder.read("found.json"));
        EXPECT_EQ(found["bestPositionX"], 8);
        EXPECT_EQ(found["bestPositionY"], 6);
        for (const auto& [key, value] : found.items()) EXPECT_EQ(result[key], value);
        const auto scores = readAll<float>(tool::readImageFile(folder / "out.npy"));
        EXPECT_EQ(*std::max_element(scores.begin(), scores.end()), scores[6 * 16 + 8]);
        EXPECT_NEAR(scores[6 * 16 + 8], 1, 1e-6);
    }
    // White around the 4 x 3, black inside; all else from black to white as it was.
    const auto marked = readAll<std::uint8_t>(tool::readImageFile(folder / "marked.png"));
    const auto pixels = readAll<std::uint8_t>(image);
    const auto [low, high] = std::minmax_element(pixels.begin(), pixels.end());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t x = i % 16, y = i / 16;
        const bool isIn = x >= 7 && x < 11 && y >= 5 && y < 8, isInside = x >= 8 && x < 10 && y == 6;
        const double plain = 255.0 * (pixels[i] - *low) / (*high - *low);
        EXPECT_NEAR(marked[i], isInside ? 0 : isIn ? 255 : plain, 0.51) << x << ", " << y;
    }
    EXPECT_THAT(zel("cross-correlation in.png part.png out.npy").output, HasSubstr("\nmaximumCorrelation: "));
}

TEST_F(CrossCorrelationCommandTest, RefusesWhatDoesNotFitAndWritesNothing) {
    folder.write("floats.npy", npyBytes("<f4", "(1, 1)", rawBytes(std::vector<float>{1})));
    folder.write("volume.npy", npyBytes("|u1", "(2, 1, 1)", "ab"));
    const auto files = folder.names();
    for (const auto& [arguments, text] :
         {std::pair{"part.png in.png out.npy", "inputTemplate is 16 x 12 x 1; it must be no larger than inputImage"},
          {"in.png floats.npy out.npy", "inputTemplate is of type float32; it must have the type of inputImage"},
          {"volume.npy part.png out.npy", "volume.npy has several slices; cross-correlation takes one"},
          {"in.png part.png out.png", "the image is float32"},
          {"in.png part.png out.npy --mark marked.gif", "cannot write marked.gif"},
          {"in.png part.png out.npy --mark out.npy", "two results are the same file, out.npy"},
          {"in.png part.png out.npy --measurement no/found.json", "cannot write no/found.json"}}) {
        SCOPED_TRACE(arguments);
        expectOneErrorLine(zel(std::string("cross-correlation ") + arguments), text);
    }
    expectOneErrorLine(zel("cross-correlation in.png part.png out.npy --mode both"), 2,
                       "--mode is 'both', but takes plain or mean-removed");
    EXPECT_EQ(folder.names(), files);
}

}  // namespace zel::test
