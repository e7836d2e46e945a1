#include <zlib.h>

#include "ImageFileTest.h"

namespace zel::test {

namespace {

std::string bigEndian(std::uint32_t value) {
    return {static_cast<char>(value >> 24U), static_cast<char>(value >> 16U), static_cast<char>(value >> 8U),
            static_cast<char>(value)};
}

std::string chunk(const std::string& type, const std::string& data) {
    const std::string body = type + data;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return bigEndian(static_cast<std::uint32_t>(data.size())) + body + bigEndian(static_cast<std::uint32_t>(sum));
}

std::string deflated(const std::string& bytes) {
    std::string packed(compressBound(bytes.size()), '\0');
    uLongf size = packed.size();
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
             bytes.size());
    return packed.substr(0, size);
}

enum Colours : char { grey = 0, rgb = 2, palette = 3, greyAlpha = 4, rgbAlpha = 6 };

/// A PNG file put together without libpng. Each line of the data begins with its filter byte.
std::string pngBytes(std::uint32_t width, std::uint32_t height, int bits, Colours colours, const std::string& lines,
                     const std::string& furtherChunks = "", bool isInterlaced = false) {
    const std::string header = bigEndian(width) + bigEndian(height) + static_cast<char>(bits) +
                               static_cast<char>(colours) + std::string(2, '\0') + static_cast<char>(isInterlaced);
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + furtherChunks + chunk("IDAT", deflated(lines)) +
           chunk("IEND", "");
}

std::string line(std::initializer_list<int> bytes) {
    std::string text(1, '\0');
    for (const int byte : bytes) text += static_cast<char>(byte);
    return text;
}

}  // namespace

class PngFileTest : public ImageFileTest {
protected:
    PngFileTest() : ImageFileTest("a.Png") {}
};

TEST_F(PngFileTest, ReadsGreyOfEveryDepth) {
    const auto read8 = [this](int bits, const std::string& lines) {
        return readAll<std::uint8_t>(read(pngBytes(3, 2, bits, grey, lines)));
    };
    using Bytes = std::vector<std::uint8_t>;
    EXPECT_EQ(read8(8, line({1, 2, 3}) + line({4, 5, 255})), (Bytes{1, 2, 3, 4, 5, 255}));
    EXPECT_EQ(read8(4, line({0x0F, 0x10}) + line({0x23, 0x40})), (Bytes{0, 255, 17, 34, 51, 68}));
    EXPECT_EQ(read8(2, line({0b00011000}) + line({0b11000100})), (Bytes{0, 85, 170, 255, 0, 85}));
    EXPECT_EQ(read8(1, line({0b01000000}) + line({0b10100000})), (Bytes{0, 255, 0, 255, 0, 255}));
    const HostImage deep = read(pngBytes(2, 1, 16, grey, line({0x12, 0x34, 0xFF, 0x00})));
    EXPECT_EQ(deep.getDataType(), VoxelTypes::uint16);
    EXPECT_EQ(readAll<std::uint16_t>(deep), (std::vector<std::uint16_t>{0x1234, 0xFF00}));
}

// Of the seven passes of a 2 x 2 picture only the first and the last two hold pixels.
TEST_F(PngFileTest, ReadsInterlacedPictures) {
    const HostImage image = read(pngBytes(2, 2, 8, grey, line({1}) + line({2}) + line({3, 4}), "", true));
    EXPECT_EQ(readAll<std::uint8_t>(image), (std::vector<std::uint8_t>{1, 2, 3, 4}));
}

TEST_F(PngFileTest, WritesWhatItReads) {
    for (const ImageSize size : {ImageSize{1, 1}, ImageSize{63, 40}, ImageSize{500, 3}}) {
        expectRoundTrip(VoxelTypes::uint8, size, false);
        expectRoundTrip(VoxelTypes::uint16, size, false);
    }
}

TEST_F(PngFileTest, RefusesEverythingButGrey) {
    EXPECT_THAT(refusal(pngBytes(1, 1, 8, rgb, line({1, 2, 3}))), HasSubstr("colours; only grey"));
    EXPECT_THAT(refusal(pngBytes(1, 1, 8, rgbAlpha, line({1, 2, 3, 4}))), HasSubstr("colours; only grey"));
    EXPECT_THAT(refusal(pngBytes(1, 1, 8, greyAlpha, line({1, 2}))), HasSubstr("transparency; only grey"));
    EXPECT_THAT(refusal(pngBytes(1, 1, 8, palette, line({0}), chunk("PLTE", "abc"))), HasSubstr("a palette; only"));
    EXPECT_THAT(refusal(pngBytes(1, 1, 8, grey, line({0}), chunk("tRNS", std::string(2, '\0')))),
                HasSubstr("transparency; only grey"));
}

TEST_F(PngFileTest, EveryPrefixAndEveryDamageIsRefusedByName) {
    const std::string whole = pngBytes(3, 2, 8, grey, line({1, 2, 3}) + line({4, 5, 255}));
    expectEveryPrefixIsRefusedByName(whole);
    EXPECT_THAT(refusal(whole.substr(0, whole.size() - 1)), HasSubstr("its end is missing"));
    EXPECT_THAT(refusal("GIF89a, and then some"), HasSubstr("it is not a PNG file"));

    std::string damaged = whole;
    damaged[whole.find("IDAT") + 8] ^= 0x10;
    EXPECT_THAT(refusal(damaged), HasSubstr("it is damaged: "));
}

TEST_F(PngFileTest, RefusesWhatDoesNotFitIntoMemory) {
    const std::string huge = pngBytes(2147483647, 2147483647, 8, grey, line({1}));
    EXPECT_THAT(refusal(huge), HasSubstr("the image takes 4398046507008 MiB"));
}

TEST_F(PngFileTest, RefusesToWriteWhatItCannotHold) {
    EXPECT_THAT(
        writeRefusal(VoxelTypes::float32, {2, 2}),
        HasSubstr("PNG holds uint8 and uint16, the image is float32; write .npy, or make it fit with zel convert"));
    EXPECT_THAT(writeRefusal(VoxelTypes::uint8, {2, 2, 5}), HasSubstr("PNG holds one slice, the image has 5"));
}

}  // namespace zel::test
