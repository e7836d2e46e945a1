#include <zlib.h>

#include "ImageFiles/FormatTest.h"

namespace zel::test {

namespace {

using Bytes = std::vector<std::uint8_t>;
enum Colours : std::uint8_t { grey = 0, rgb = 2, palette = 3, greyAlpha = 4, rgbAlpha = 6 };

std::string big32(std::uint64_t value) {
    return numberBytes(value, 4, false);
}

std::string chunk(const std::string& type, const std::string& data) {
    const std::string body = type + data;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return big32(data.size()) + body + big32(sum);
}

/// A PNG file put together without libpng. Each line of the data gets its filter byte, 0.
std::string pngBytes(std::uint32_t width, std::uint32_t height, char bits, Colours colours,
                     const std::vector<Bytes>& lines, const std::string& furtherChunks = "", char interlace = 0) {
    Bytes data;
    for (const Bytes& line : lines) {
        data.push_back(0);
        data.insert(data.end(), line.begin(), line.end());
    }
    std::string packed(compressBound(data.size()), '\0');
    uLongf size = packed.size();
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, data.data(), data.size());
    packed.resize(size);
    const std::string header =
        big32(width) + big32(height) + bits + static_cast<char>(colours) + '\0' + '\0' + interlace;
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + furtherChunks + chunk("IDAT", packed) + chunk("IEND", "");
}

}  // namespace

class PngFileTest : public FormatTest {
protected:
    PngFileTest() : FormatTest("a.png") {}
};

TEST_F(PngFileTest, ReadsGreyOfEveryDepth) {
    const auto read8 = [this](char bits, const std::vector<Bytes>& lines) {
        return readAll<std::uint8_t>(read(pngBytes(3, 2, bits, grey, lines)));
    };
    EXPECT_EQ(read8(8, {{1, 2, 3}, {4, 5, 255}}), (Bytes{1, 2, 3, 4, 5, 255}));
    EXPECT_EQ(read8(4, {{0x0F, 0x10}, {0x23, 0x40}}), (Bytes{0, 255, 17, 34, 51, 68}));
    EXPECT_EQ(read8(2, {{0b00011000}, {0b11000100}}), (Bytes{0, 85, 170, 255, 0, 85}));
    EXPECT_EQ(read8(1, {{0b01000000}, {0b10100000}}), (Bytes{0, 255, 0, 255, 0, 255}));
    const HostImage deep = read(pngBytes(2, 1, 16, grey, {{0x12, 0x34, 0xFF, 0x00}}));
    EXPECT_EQ(deep.getDataType(), VoxelTypes::uint16);
    EXPECT_EQ(readAll<std::uint16_t>(deep), (std::vector<std::uint16_t>{0x1234, 0xFF00}));

    // Of the seven passes of an interlaced 2 x 2 picture only the first and the last two hold pixels.
    const HostImage interlaced = read(pngBytes(2, 2, 8, grey, {{1}, {2}, {3, 4}}, "", 1));
    EXPECT_EQ(readAll<std::uint8_t>(interlaced), (Bytes{1, 2, 3, 4}));
}

TEST_F(PngFileTest, RefusalsSayWhatIsWrong) {
    const std::string whole = pngBytes(3, 2, 8, grey, {{1, 2, 3}, {4, 5, 255}});
    std::string damaged = whole;
    damaged[whole.find("IDAT") + 8] ^= 0x10;
    expectRefusals({
        {whole.substr(0, whole.size() - 1), "its end is missing"},
        {damaged, "it is damaged: "},
        {pngBytes(1, 1, 8, rgb, {{1, 2, 3}}), "colours; only grey"},
        {pngBytes(1, 1, 8, rgbAlpha, {{1, 2, 3, 4}}), "colours; only grey"},
        {pngBytes(1, 1, 8, greyAlpha, {{1, 2}}), "transparency; only grey"},
        {pngBytes(1, 1, 8, palette, {{0}}, chunk("PLTE", "abc")), "a palette; only"},
        {pngBytes(1, 1, 8, grey, {{0}}, chunk("tRNS", std::string(2, '\0'))), "transparency; only grey"},
        {pngBytes(2147483647, 2147483647, 8, grey, {{1}}), "the image takes 4398046507008 MiB"},
    });
}

}  // namespace zel::test
