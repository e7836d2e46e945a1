#include <tiff.h>

#include <cmath>

#include "ImageFiles/FormatTest.h"
#include "ImageFiles/Tiff/TiffBytes.h"
#include "ImageFiles/Tiff/TiffWriter.h"

namespace zel::test {

class TiffFileTest : public FormatTest {
protected:
    using Bytes = std::vector<std::uint8_t>;
    using Tag = TiffBytes::Tag;
    using Tags = std::vector<Tag>;

    TiffFileTest() : FormatTest("a.TIFF") {}

    static Tag bits(std::uint64_t count) { return {TIFFTAG_BITSPERSAMPLE, {count}}; }
    static Tag format(std::uint64_t sampleFormat) { return {TIFFTAG_SAMPLEFORMAT, {sampleFormat}}; }
    static Tag colour(std::uint64_t photometric) { return {TIFFTAG_PHOTOMETRIC, {photometric}}; }
    static Tag compression(std::uint64_t scheme) { return {TIFFTAG_COMPRESSION, {scheme}}; }
    static Tag rowsPerStrip(std::uint64_t count) { return {TIFFTAG_ROWSPERSTRIP, {count}}; }
    static Tags tiles(std::uint64_t side) { return {{TIFFTAG_TILEWIDTH, {side}}, {TIFFTAG_TILELENGTH, {side}}}; }
    /// A file of one page of 3 x 2 voxels.
    static TiffBytes page3x2(const Tags& tags, const std::vector<std::string>& segments = {"abcdef"}) {
        return TiffBytes().page(3, 2, segments, tags);
    }

    using FormatTest::read;
    HostImage read(const TiffBytes& tiff) const { return read(tiff.bytes()); }
    Bytes read8(const TiffBytes& tiff) const { return readAll<std::uint8_t>(read(tiff)); }
    void expectRefusals(const std::vector<std::pair<TiffBytes, const char*>>& cases) const {
        for (const auto& [tiff, text] : cases) FormatTest::expectRefusals({{tiff.bytes(), text}});
    }
};

TEST_F(TiffFileTest, ReadsEveryTypeInBothByteOrdersAndBothFormats) {
    for (const VoxelTypes type : allVoxelTypes) {
        const char kind = voxelTypeName(type)[0];
        const Tags tags{bits(8 * helper::getSizeOf(type)), format(kind == 'u'   ? SAMPLEFORMAT_UINT
                                                                  : kind == 'i' ? SAMPLEFORMAT_INT
                                                                                : SAMPLEFORMAT_IEEEFP)};
        visitVoxelType(type, RealTypes{}, [&]<typename T>() {
            for (const bool isBig : {false, true}) {
                expectRead<T>({T(1), T(100), T(T(0) - T(3)), T(77)}, [&](const std::string& voxels, bool isLittle) {
                    return TiffBytes(isLittle, isBig).page(2, 2, {voxels}, tags).bytes();
                });
            }
        });
    }
}

// A picture of 20 x 18 voxels in tiles of 16 x 16: those at the right and below reach beyond it.
TEST_F(TiffFileTest, ReadsStripsAndTilesAsOnePicture) {
    const std::size_t width = 20, height = 18;
    std::string whole;
    std::vector<std::string> tiled(4, std::string(256, '!')), strips(4);
    for (std::size_t i = 0; i < width * height; ++i) {
        const std::size_t x = i % width, y = i / width;
        whole += static_cast<char>(i * 7);
        strips[y / 5] += whole.back();
        tiled[y / 16 * 2 + x / 16][y % 16 * 16 + x % 16] = whole.back();
    }
    const Bytes expected(whole.begin(), whole.end());
    EXPECT_EQ(read8(TiffBytes().page(width, height, {whole})), expected);
    EXPECT_EQ(read8(TiffBytes().page(width, height, strips, {rowsPerStrip(5)})), expected);
    EXPECT_EQ(read8(TiffBytes().page(width, height, tiled, tiles(16))), expected);
}

TEST_F(TiffFileTest, StretchesFewBitsAndInvertsWhiteZero) {
    const auto bytes = [this](std::uint64_t count, std::uint64_t photometric, const std::string& voxels) {
        return read8(page3x2({bits(count), colour(photometric)}, {voxels}));
    };
    EXPECT_EQ(bytes(1, 1, "\x40\xA0"), (Bytes{0, 255, 0, 255, 0, 255}));
    EXPECT_EQ(bytes(1, 0, "\x40\xA0"), (Bytes{255, 0, 255, 0, 255, 0}));
    EXPECT_EQ(bytes(2, 1, "\x18\xC4"), (Bytes{0, 85, 170, 255, 0, 85}));
    EXPECT_EQ(bytes(4, 1, "\x0F\x10\x23\x40"), (Bytes{0, 255, 17, 34, 51, 68}));
    EXPECT_EQ(bytes(8, 0, std::string("\x00\x01\xFF\x02\x03\x04", 6)), (Bytes{255, 254, 0, 253, 252, 251}));
    const std::string deep("\x12\x34\x00\x00", 4);
    EXPECT_EQ(readAll<std::uint16_t>(read(TiffBytes(false).page(2, 1, {deep}, {bits(16), colour(0)}))),
              (std::vector<std::uint16_t>{0xFFFF - 0x1234, 0xFFFF}));
}

// 1, -65504 (the lowest), 2^-24 (the smallest), infinity.
TEST_F(TiffFileTest, ReadsHalfFloats) {
    const std::string halves("\x3C\x00\xFB\xFF\x00\x01\x7C\x00", 8);
    const Tags tags{bits(16), format(SAMPLEFORMAT_IEEEFP)};
    EXPECT_EQ(readAll<float>(read(TiffBytes(false).page(2, 2, {halves}, tags))),
              (std::vector<float>{1, -65504, std::ldexp(1.0F, -24), HUGE_VALF}));
}

// PackBits: two voxels as they are, then four times the same.
TEST_F(TiffFileTest, ReadsPagesAsSlicesCompressedOrNot) {
    TiffBytes tiff = page3x2({});
    tiff.page(3, 2, {"\x01xy\xFDz"}, {compression(COMPRESSION_PACKBITS)}).page(3, 2, {"abc", "xyz"}, {rowsPerStrip(1)});
    const HostImage image = read(tiff);
    EXPECT_EQ(imageSizeOf(image), (ImageSize{3, 2, 3}));
    EXPECT_EQ(bytesOf(image), "abcdefxyzzzzabcxyz");
    EXPECT_EQ(image.getSpacing(2), 1);
}

TEST_F(TiffFileTest, RefusesTruncatedBigAndTiledFiles) {
    const std::vector<std::string> segments{std::string(256, 'a'), std::string(256, 'b')};
    expectTruncationsAreRefused(write(TiffBytes(false, true).page(20, 3, segments, tiles(16)).bytes()));
    // The voxels are behind all directories here.
    std::string late = page3x2({{TIFFTAG_STRIPOFFSETS, {500}}}).bytes();
    late.resize(505);
    FormatTest::expectRefusals({{late, "its page 1 is damaged: "}});
}

// Strips that libtiff would complete with other bytes of the file, or with white.
TEST_F(TiffFileTest, NeverInventsVoxels) {
    // Each bit 1 is one more white line of a fax; behind eight of them is its end.
    const Tags fax{bits(1), compression(COMPRESSION_CCITTFAX4), colour(0)};
    const std::string eightLines("\xFF\x00\x10\x01", 4);
    EXPECT_EQ(read8(TiffBytes().page(8, 8, {eightLines}, fax)), Bytes(64, 255));
    expectRefusals({
        {page3x2({rowsPerStrip(1)}, {"abc"}), "strip 2 has 0 bytes, at byte 0 "},
        {page3x2({rowsPerStrip(1), {TIFFTAG_STRIPBYTECOUNTS, {3, 2}}}, {"abc", "def"}), "strip 2 has 2 bytes"},
        {TiffBytes().page(8, 9, {eightLines}, fax), "its page 1 is damaged: Premature"},
        {TiffBytes().page(8, 9, {"\xFF"}, fax), "its page 1 is damaged: Premature"},
    });
}

// Pages of one voxel each, with their numbers. Two channels, three slices and two time points in ImageJ's order and in
// another one, which the same description tells again.
TEST_F(TiffFileTest, ChannelsAndTimePointsAreAxesAndAreWrittenAsTheyWere) {
    const std::string ome =
        R"(<?xml version="1.0"?><OME xmlns="o"><Image><Pixels DimensionOrder="XYTZC" SizeX="1" SizeY="1" SizeZ="3" )"
        R"(SizeC="2" SizeT="2" Type="uint8" PhysicalSizeX="0.5" PhysicalSizeZ="2"><Channel Name="red"/><TiffData>)";
    const std::string uuid = R"(<UUID FileName="a.tif">urn:uuid:1</UUID>)", end = "</TiffData></Pixels></Image></OME>";
    const std::string imageJ = "ImageJ=1.5\nimages=12\nchannels=2\nslices=3\nframes=2\nmode=composite\n";
    const std::string inImageJOrder("\0\2\4\1\3\5\6\x8\xA\x7\x9\xB", 12),
        inOmeOrder("\0\2\4\6\x8\xA\1\3\5\x7\x9\xB", 12);
    for (const auto& [text, voxels, unit] :
         {std::tuple{imageJ + "unit=\\u00B5m\nspacing=2\n", inImageJOrder, "um"},
          {ome + uuid + end, inOmeOrder, "um"},
          {R"({"shape": [2, 3, 2, 1, 1], "axes": "CZTYX"})", inOmeOrder, ""},
          {R"({"shape": [2, 2, 3, 1, 1]})", std::string("\0\1\2\3\4\5\6\x7\x8\x9\xA\xB", 12), ""}}) {
        Tag tag{TIFFTAG_IMAGEDESCRIPTION, {text.begin(), text.end()}};
        tag.values.push_back(0);
        TiffBytes tiff;
        for (char number = 0; number < 12; ++number) {
            tiff.page(1, 1, {std::string(1, number)}, number == 0 ? Tags{tag} : Tags{});
        }
        tool::FileDetails details;
        const HostImage image = readImageFile(write(tiff.bytes()), details);
        EXPECT_EQ(imageSizeOf(image), (ImageSize{1, 1, 3, 2, 2}));
        EXPECT_EQ(bytesOf(image), voxels);
        if (text.starts_with('{')) continue;
        EXPECT_EQ(image.getSpacing(2), 2);
        EXPECT_EQ(details.unit, unit);
        const bool isOme = !details.tiff.omeXml.empty();
        EXPECT_EQ(tool::lostDetails(details, "MRC"), isOme ? "OME description, unit um" : "unit um");

        writeImageFile(folder / "b.tif", image, details);
        tool::FileDetails again;
        EXPECT_EQ(bytesOf(readImageFile(folder / "b.tif", again)), voxels);
        EXPECT_EQ(again.unit, unit);
        EXPECT_EQ(again.tiff.omeXml, isOme ? ome + end : "");
        EXPECT_EQ(again.tiff.imageJLines, details.tiff.imageJLines);
    }
}

TEST_F(TiffFileTest, DescriptionsHaveToFitThePages) {
    const auto ome = [](const std::string& order, const std::string& data) {
        return "<OME><Pixels DimensionOrder='" + order + "' SizeC='2'>" + data + "</Pixels></OME>";
    };
    for (const auto& [text, error] : std::initializer_list<std::pair<std::string, const char*>>{
             {"ImageJ=1.5\nchannels=2\nslices=3\n",
              "ImageJ description tells of 2 channels, 3 slices and 1 time points"},
             {"<OME><Pixels SizeZ='3'/></OME>", "its OME description tells of 1 channels, 3 slices"},
             {ome("ZCTXY", ""), "DimensionOrder 'ZCTXY'"},
             {ome("XYCZT", "<TiffData IFD='0' FirstC='1'/>"), "puts its pages in another order than its Dim"},
             {ome("XYCZT", "<Pixels/>"), "its OME description tells of several images"},
         }) {
        Tag tag{TIFFTAG_IMAGEDESCRIPTION, {text.begin(), text.end()}};
        tag.values.push_back(0);
        expectRefusals({{page3x2({tag}).page(3, 2, {"abcdef"}), error}});
    }
}

TEST_F(TiffFileTest, OrientationIsAppliedOrRefused) {
    const std::string expected[] = {"abcdef", "cbafed", "fedcba", "defabc"};
    for (std::uint64_t number = 1; number <= 4; ++number) {
        EXPECT_EQ(bytesOf(read(page3x2({{TIFFTAG_ORIENTATION, {number}}}))), expected[number - 1]);
    }
    expectRefusals({{page3x2({{TIFFTAG_ORIENTATION, {6}}}), "its page 1 has the orientation 6, which turns it by a"}});
}

// A large volume of one page, as some programs write it.
TEST_F(TiffFileTest, NeverLeavesSlicesOut) {
    const auto described = [](const std::string& text) {
        Tag tag{TIFFTAG_IMAGEDESCRIPTION, {text.begin(), text.end()}};
        tag.values.push_back(0);
        return page3x2({tag}, {"abcdefghijkl"});
    };
    for (const char* const text : {"ImageJ=1.5\nimages=2\nslices=2\n", "{\"shape\": [2, 2, 3], \"truncated\": true}"})
        expectRefusals({{described(text), "more images than it has pages"}});
    EXPECT_EQ(imageSizeOf(read(described("ImageJ=1.5\nimages=2\n").page(3, 2, {"abcdef"}))), (ImageSize{3, 2, 2}));
    for (const char* const text : {"ImageJ=1.5\n", "{\"shape\": [2, 3]}", "images=2"})
        EXPECT_EQ(imageSizeOf(read(described(text))), (ImageSize{3, 2}));
}

TEST_F(TiffFileTest, RefusalsSayWhatIsWrong) {
    TiffBytes loop = page3x2({});
    const std::uint64_t firstDirectory = loop.directory();
    loop.page(3, 2, {"abcdef"}).linkTo(firstDirectory);
    const Tag palette{TIFFTAG_COLORMAP, std::vector<std::uint64_t>(768, 9)},
        packBits = compression(COMPRESSION_PACKBITS);
    expectRefusals({
        {page3x2({colour(2), {TIFFTAG_SAMPLESPERPIXEL, {3}}}), "its page 1 has colours; only grey"},
        {page3x2({colour(3), palette}), "its page 1 has a palette; only grey"},
        {page3x2({{TIFFTAG_SAMPLESPERPIXEL, {2}}}), "its page 1 has 2 samples a pixel; only grey"},
        {page3x2({{TIFFTAG_IMAGEDEPTH, {2}}}), "is a volume by itself"},
        {page3x2({bits(24), format(SAMPLEFORMAT_IEEEFP)}), "floating-point numbers of 24 bits; integers of 8, 16"},
        {page3x2({bits(12)}), "unsigned integers of 12 bits"},
        {page3x2({bits(64), format(SAMPLEFORMAT_COMPLEXIEEEFP)}), "complex numbers of 64 bits"},
        {page3x2({colour(0), format(SAMPLEFORMAT_INT)}), "a white 0 among signed integers"},
        {page3x2({compression(COMPRESSION_JP2000)}), "is compressed with "},
        {page3x2({compression(12345)}), "is compressed with scheme 12345, which cannot be read here"},
        {page3x2(tiles(1U << 31U)), "its page 1 has tiles of 2147483648 x"},
        {page3x2({{TIFFTAG_IMAGEWIDTH, {0}}}), "it is damaged: "},
        {page3x2({}).page(2, 3, {"abcdef"}), "its page 2 is 2 x 3 uint8, its first 3 x 2 uint8; pages of one size"},
        {page3x2({}).page(3, 2, {"abcdef"}, {format(SAMPLEFORMAT_INT)}), "its page 2 is 3 x 2 int8"},
        {page3x2({}).linkTo(1U << 20U), "its page 2 is damaged: "},
        {loop, "its page 3 is damaged: it is an earlier page once more"},
        {TiffBytes().page(0xFFFFFFFF, 0xFFFFFFFF, {"a"}, {packBits}), "it is damaged: "},
        {TiffBytes().page(1U << 30U, 1U << 29U, {"a"}, {packBits, rowsPerStrip(1)}), "it is damaged: "},
        {TiffBytes(), "it is damaged: "},
    });
}

TEST_F(TiffFileTest, BigTiffBeginsAtFourGibibytes) {
    for (const ImageSize size : {ImageSize{65536, 65000}, {1024, 1024, 4000}})
        EXPECT_FALSE(tool::needsBigTiff(VoxelTypes::uint8, size));
    for (const ImageSize size :
         {ImageSize{65536, 65535}, {1024, 1024, 4096}, {1, 1, 10'000'000}, {1U << 31U, 1U << 31U}}) {
        EXPECT_TRUE(tool::needsBigTiff(VoxelTypes::uint8, size));
    }
}

}  // namespace zel::test
