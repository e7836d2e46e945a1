#include "ImageFileTest.h"
#include "ImageFiles/Tiff/TiffWriter.h"
#include "TiffBytes.h"

namespace zel::test {

namespace {

enum TagId : std::uint16_t {
    widthTag = 256,
    bitsTag = 258,
    compressionTag = 259,
    colourTag = 262,
    descriptionTag = 270,
    samplesTag = 277,
    rowsTag = 278,
    sizesTag = 279,
    paletteTag = 320,
    tileWidthTag = 322,
    tileHeightTag = 323,
    formatTag = 339,
    depthTag = 32997,
};

using Octets = std::vector<std::uint8_t>;

}  // namespace

class TiffFileTest : public ImageFileTest {
protected:
    TiffFileTest() : ImageFileTest("a.TIFF") {}

    using ImageFileTest::read;
    HostImage read(const TiffBytes& tiff) const { return read(tiff.bytes()); }
};

TEST_F(TiffFileTest, ReadsEveryTypeInBothByteOrdersAndBothFormats) {
    enum Format : std::uint64_t { unsignedFormat = 1, signedFormat = 2, floatFormat = 3 };
    const auto check = [this]<typename T>(T) {
        const std::vector<T> values{T(1), T(100), T(T(0) - T(3)), T(77)};
        const Format format = std::is_floating_point_v<T> ? floatFormat
                              : std::is_signed_v<T>       ? signedFormat
                                                          : unsignedFormat;
        for (int variant = 0; variant < 4; ++variant) {
            TiffBytes tiff(variant % 2 == 0, variant / 2 == 1);
            std::string voxels;
            for (const T& value : values) {
                std::uint64_t bits = 0;
                std::memcpy(&bits, &value, sizeof value);
                voxels += tiff.number(bits, sizeof value);
            }
            tiff.page(2, 2, {voxels}, {{bitsTag, {8 * sizeof(T)}}, {formatTag, {format}}});
            const HostImage image = read(tiff);
            EXPECT_EQ(image.getDataType(), voxelTypeOf<T>);
            EXPECT_EQ(readAll<T>(image), values) << "variant " << variant;
        }
    };
    for (const VoxelTypes type : allVoxelTypes) {
        visitVoxelType(type, RealTypes{}, [&]<typename T>() { check(T{}); });
    }
}

// A picture of 20 x 18 voxels in tiles of 16 x 16: those at the right and below stand over.
TEST_F(TiffFileTest, ReadsStripsAndTilesAsOnePicture) {
    const std::size_t width = 20, height = 18;
    std::string whole;
    for (std::size_t i = 0; i < width * height; ++i) whole += static_cast<char>(i * 7);
    std::vector<std::string> tiles, strips;
    for (std::size_t top : {0U, 16U}) {
        for (std::size_t left : {0U, 16U}) {
            std::string tile(256, '!');
            for (std::size_t y = top; y < std::min<std::size_t>(top + 16, height); ++y) {
                for (std::size_t x = left; x < std::min<std::size_t>(left + 16, width); ++x) {
                    tile[(y - top) * 16 + x - left] = whole[y * width + x];
                }
            }
            tiles.push_back(tile);
        }
    }
    for (std::size_t y = 0; y < height; y += 5) strips.push_back(whole.substr(y * width, 5 * width));

    const Octets expected(whole.begin(), whole.end());
    EXPECT_EQ(readAll<std::uint8_t>(read(TiffBytes().page(width, height, {whole}))), expected);
    EXPECT_EQ(readAll<std::uint8_t>(read(TiffBytes().page(width, height, strips, {{rowsTag, {5}}}))), expected);
    EXPECT_EQ(readAll<std::uint8_t>(
                  read(TiffBytes().page(width, height, tiles, {{tileWidthTag, {16}}, {tileHeightTag, {16}}}))),
              expected);
}

TEST_F(TiffFileTest, SpreadsFewBitsAndTurnsWhiteZero) {
    const auto octets = [this](int bits, int colour, const std::string& voxels) {
        return readAll<std::uint8_t>(read(TiffBytes().page(
            3, 2, {voxels}, {{bitsTag, {std::uint64_t(bits)}}, {colourTag, {std::uint64_t(colour)}}})));
    };
    EXPECT_EQ(octets(1, 1, "\x40\xA0"), (Octets{0, 255, 0, 255, 0, 255}));
    EXPECT_EQ(octets(1, 0, "\x40\xA0"), (Octets{255, 0, 255, 0, 255, 0}));
    EXPECT_EQ(octets(2, 1, "\x18\xC4"), (Octets{0, 85, 170, 255, 0, 85}));
    EXPECT_EQ(octets(4, 1, std::string("\x0F\x10\x23\x40")), (Octets{0, 255, 17, 34, 51, 68}));
    EXPECT_EQ(octets(8, 0, std::string("\x00\x01\xFF\x02\x03\x04", 6)), (Octets{255, 254, 0, 253, 252, 251}));
    const HostImage deep =
        read(TiffBytes(false).page(2, 1, {std::string("\x12\x34\x00\x00", 4)}, {{bitsTag, {16}}, {colourTag, {0}}}));
    EXPECT_EQ(readAll<std::uint16_t>(deep), (std::vector<std::uint16_t>{0xFFFF - 0x1234, 0xFFFF}));
}

// PackBits: two voxels as they are, then four times the same.
TEST_F(TiffFileTest, ReadsPagesAsSlicesCompressedOrNot) {
    const HostImage image = read(TiffBytes()
                                     .page(3, 2, {"abcdef"})
                                     .page(3, 2, {"\x01xy\xFDz"}, {{compressionTag, {32773}}})
                                     .page(3, 2, {"abc", "xyz"}, {{rowsTag, {1}}}));
    EXPECT_EQ(imageSizeOf(image), (ImageSize{3, 2, 3}));
    EXPECT_EQ(bytesOf(image), "abcdefxyzzzzabcxyz");
    EXPECT_EQ(image.getSpacing(2), 1);
}

TEST_F(TiffFileTest, WritesWhatItReads) {
    for (const VoxelTypes type : allVoxelTypes) {
        if (type >= VoxelTypes::complex64) continue;
        for (const ImageSize size : {ImageSize{1, 1}, ImageSize{37, 23, 3}, ImageSize{700, 500, 2}}) {
            expectRoundTrip(type, size, true);
        }
    }
}

TEST_F(TiffFileTest, EveryPrefixIsRefusedByName) {
    writeImageFile(folder / "b.tif", randomImage<std::uint16_t>({5, 4, 2}, 1));
    const std::string ours = folder.read("b.tif");
    const std::string tiled =
        TiffBytes(false, true)
            .page(20, 3, {std::string(256, 'a'), std::string(256, 'b')}, {{tileWidthTag, {16}}, {tileHeightTag, {16}}})
            .bytes();
    for (const std::string& whole : {ours, tiled}) expectEveryPrefixIsRefusedByName(whole);
    // The voxels are behind all directories here.
    std::string late = TiffBytes().page(3, 2, {"abcdef"}, {{273, {500}}}).bytes();
    late.resize(505);
    EXPECT_THAT(refusal(late), HasSubstr("its page 1 is damaged: "));
}

// Strips of the kind that libtiff fills up with other bytes of the file, or with white.
TEST_F(TiffFileTest, NoVoxelIsMadeUp) {
    const std::vector<TiffBytes::Tag> rows{{rowsTag, {1}}};
    EXPECT_THAT(refusal(TiffBytes().page(3, 2, {"abc"}, rows).bytes()), HasSubstr("strip 2 has 0 bytes, at byte 0 "));
    const std::vector<TiffBytes::Tag> shortRows{{rowsTag, {1}}, {sizesTag, {3, 2}}};
    EXPECT_THAT(refusal(TiffBytes().page(3, 2, {"abc", "def"}, shortRows).bytes()), HasSubstr("strip 2 has 2 bytes"));

    // Each bit 1 is one more white line of a fax; behind eight of them is its end.
    const std::vector<TiffBytes::Tag> fax{{bitsTag, {1}}, {compressionTag, {4}}, {colourTag, {0}}};
    const std::string whole("\xFF\x00\x10\x01", 4);
    EXPECT_EQ(readAll<std::uint8_t>(read(TiffBytes().page(8, 8, {whole}, fax))), Octets(64, 255));
    EXPECT_THAT(refusal(TiffBytes().page(8, 9, {whole}, fax).bytes()), HasSubstr("its page 1 is damaged: Premature"));
    EXPECT_THAT(refusal(TiffBytes().page(8, 9, {"\xFF"}, fax).bytes()), HasSubstr("its page 1 is damaged: Premature"));
}

// A large volume of one page, as some programs write it.
TEST_F(TiffFileTest, NoSliceIsLeftOut) {
    const auto described = [](const std::string& text) {
        TiffBytes::Tag tag{descriptionTag, {text.begin(), text.end()}};
        tag.values.push_back(0);
        return TiffBytes().page(3, 2, {"abcdefghijkl"}, {tag});
    };
    for (const char* const text : {"ImageJ=1.5\nimages=2\nslices=2\n", "{\"shape\": [2, 2, 3], \"truncated\": true}"}) {
        EXPECT_THAT(refusal(described(text).bytes()), HasSubstr("more images than it has pages"));
    }
    EXPECT_EQ(imageSizeOf(read(described("ImageJ=1.5\nimages=2\n").page(3, 2, {"abcdef"}))), (ImageSize{3, 2, 2}));
    for (const char* const text : {"ImageJ=1.5\n", "{\"shape\": [2, 3]}", "images=2"}) {
        EXPECT_EQ(imageSizeOf(read(described(text))), (ImageSize{3, 2}));
    }
}

TEST_F(TiffFileTest, RefusalsSayWhatIsWrong) {
    const auto page = [](const std::vector<TiffBytes::Tag>& tags) { return TiffBytes().page(3, 2, {"abcdef"}, tags); };
    TiffBytes loop = page({});
    const std::uint64_t firstDirectory = loop.directory();
    loop.page(3, 2, {"abcdef"}).linkTo(firstDirectory);
    struct Case {
        TiffBytes tiff;
        const char* text;
    };
    const Case cases[] = {
        {page({{colourTag, {2}}, {samplesTag, {3}}}), "its page 1 has colours; only grey"},
        {page({{colourTag, {3}}, {paletteTag, std::vector<std::uint64_t>(768, 9)}}),
         "its page 1 has a palette; only grey"},
        {page({{samplesTag, {2}}}), "its page 1 has 2 samples a pixel; only grey"},
        {page({{depthTag, {2}}}), "is a volume by itself"},
        {page({{bitsTag, {16}}, {formatTag, {3}}}), "floating-point numbers of 16 bits; integers of 8, 16"},
        {page({{bitsTag, {12}}}), "unsigned integers of 12 bits"},
        {page({{bitsTag, {64}}, {formatTag, {6}}}), "complex numbers of 64 bits"},
        {page({{colourTag, {0}}, {formatTag, {2}}}), "a white 0 among signed integers"},
        {page({{compressionTag, {34712}}}), "is compressed with "},
        {page({{compressionTag, {12345}}}), "is compressed with scheme 12345, which cannot be read here"},
        {page({{tileWidthTag, {1U << 31U}}, {tileHeightTag, {1U << 31U}}}), "its page 1 has tiles of 2147483648 x"},
        {page({{widthTag, {0}}}), "it is damaged: "},
        {page({}).page(2, 3, {"abcdef"}), "its page 2 is 2 x 3 uint8, its first 3 x 2 uint8; pages of one size"},
        {page({}).page(3, 2, {"abcdef"}, {{formatTag, {2}}}), "its page 2 is 3 x 2 int8"},
        {page({}).linkTo(1U << 20U), "its page 2 is damaged: "},
        {loop, "its page 3 is damaged: it is an earlier page once more"},
        {TiffBytes().page(0xFFFFFFFF, 0xFFFFFFFF, {"a"}, {{compressionTag, {32773}}}), "it is damaged: "},
        {TiffBytes().page(1U << 30U, 1U << 29U, {"a"}, {{compressionTag, {32773}}, {rowsTag, {1}}}), "it is damaged: "},
        {TiffBytes(), "it is damaged: "},
    };
    for (const Case& c : cases) EXPECT_THAT(refusal(c.tiff.bytes()), HasSubstr(c.text));
    EXPECT_THAT(refusal("GIF89a, and then some"), HasSubstr("it is not a TIFF file"));
}

TEST_F(TiffFileTest, RefusesToWriteWhatItCannotHold) {
    EXPECT_THAT(writeRefusal(VoxelTypes::complex64, {2, 2}), HasSubstr("the image is complex64; write .npy"));
    EXPECT_THAT(writeRefusal(VoxelTypes::uint8, {2, 2, 2, 2}), HasSubstr("up to three axes; write .npy"));
    EXPECT_THAT(writeRefusal(VoxelTypes::uint8, {2, 2, 2'000'000}), HasSubstr("at most 1000000 slices"));
}

TEST_F(TiffFileTest, BigTiffBegins) {
    EXPECT_FALSE(tool::needsBigTiff(VoxelTypes::uint8, {65536, 65000}));
    EXPECT_TRUE(tool::needsBigTiff(VoxelTypes::uint8, {65536, 65535}));
    EXPECT_FALSE(tool::needsBigTiff(VoxelTypes::uint16, {1024, 1024, 2000}));
    EXPECT_TRUE(tool::needsBigTiff(VoxelTypes::uint16, {1024, 1024, 2048}));
    EXPECT_TRUE(tool::needsBigTiff(VoxelTypes::uint8, {1, 1, 10'000'000}));
    EXPECT_TRUE(tool::needsBigTiff(VoxelTypes::float64, {2147483647, 2147483647}));
}

}  // namespace zel::test
