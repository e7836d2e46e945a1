#include <cmath>

#include "ImageFiles/FormatTest.h"

namespace zel::test {

namespace {

/// The header of an MRC file put together by hand: 2 columns, 3 rows and 4 sections of mode 0, unless changed.
class MrcBytes {
public:
    explicit MrcBytes(bool isLittle = true) : isLittle_(isLittle), header_(1024, '\0') {
        size(2, 3, 4).set(23, 1);
        for (int axis = 1; axis <= 3; ++axis) set(16 + axis, axis);
        text(208, "MAP ").text(212, isLittle ? "\x44\x44" : "\x11\x11");
    }

    /// Sets a word of the header, counted from 1 as the description of the format does.
    template <typename T>
    MrcBytes& set(int word, T value) {
        return text((word - 1) * 4, voxelBytes(value, isLittle_));
    }
    MrcBytes& size(int x, int y, int z) { return set(1, x).set(2, y).set(3, z).set(8, x).set(9, y).set(10, z); }
    MrcBytes& text(int offset, const std::string& bytes) {
        header_.replace(static_cast<std::size_t>(offset), bytes.size(), bytes);
        return *this;
    }
    std::string operator+(const std::string& rest) const { return header_ + rest; }

private:
    bool isLittle_;
    std::string header_;
};

const std::string noStamp(4, '\0');
const std::string voxels8 = "abcdefghijklmnopqrstuvwx";

}  // namespace

class MrcFileTest : public FormatTest {
protected:
    MrcFileTest() : FormatTest("a.mrc") {}
};

TEST_F(MrcFileTest, ReadsEveryModeInBothByteOrders) {
    for (const bool hasStamp : {true, false}) {
        const auto file = [=](int mode) {
            return [=](const std::string& voxels, bool isLittle) {
                MrcBytes mrc(isLittle);
                mrc.size(2, 2, 1).set(4, mode);
                if (!hasStamp) mrc.text(212, noStamp);
                return mrc + voxels + "trailing";
            };
        };
        expectRead<std::int8_t>({1, -128, -1, 5}, file(0));
        expectRead<std::int16_t>({1, -32768, -2, 5}, file(1));
        expectRead<float>({1, -3.14159274F, 0, 3.40282347e38F}, file(2));
        expectRead<std::uint16_t>({1, 32768, 65534, 5}, file(6));
    }
    // Half precision: 1, -65504 (the lowest), 2^-24 (the smallest), infinity.
    const HostImage half =
        read(MrcBytes(false).size(2, 2, 1).set(4, 12) + std::string("\x3C\x00\xFB\xFF\x00\x01\x7C\x00", 8));
    EXPECT_EQ(readAll<float>(half), (std::vector<float>{1, -65504, std::ldexp(1.0F, -24), HUGE_VALF}));
}

// The voxel of column c, row r and section s lies where the axes say, whatever their order.
TEST_F(MrcFileTest, PutsTheAxesInOrderAndKeepsTheSpacing) {
    std::array<std::size_t, 3> axes{0, 1, 2};
    do {
        SCOPED_TRACE(::testing::PrintToString(axes));
        MrcBytes mrc;
        for (int i = 0; i < 3; ++i)
            mrc.set(17 + i, int(axes[std::size_t(i)]) + 1).set(8 + i, 10 * (i + 1)).set(11 + i, 3.7F);
        mrc.set(24, 80);  // an extended header
        const HostImage image = read(mrc + std::string(80, '!') + voxels8);
        const std::size_t strides[] = {1, image.getDimension(0), image.getDimension(0) * image.getDimension(1)};
        std::string expected(24, ' ');
        for (std::size_t i = 0; i < 24; ++i)
            expected[i % 2 * strides[axes[0]] + i / 2 % 3 * strides[axes[1]] + i / 6 * strides[axes[2]]] = voxels8[i];
        EXPECT_EQ(bytesOf(image), expected);
        for (const int axis : {0, 1, 2})
            EXPECT_EQ(image.getDimension(int(axes[std::size_t(axis)])), 2U + unsigned(axis));
        EXPECT_EQ(image.getSpacing(0), 0.37);
        EXPECT_EQ(image.getSpacing(1), 0.185);
    } while (std::ranges::next_permutation(axes).found);

    const HostImage plain = read(MrcBytes().set(11, -5.0F).set(12, std::nanf("")) + voxels8);
    for (int axis = 0; axis < 3; ++axis) EXPECT_EQ(plain.getSpacing(axis), 1);
}

TEST_F(MrcFileTest, ReadsUnsignedBytesOfFilesWithoutTheFlagForSignedOnes) {
    constexpr int imod = 1146047817;
    for (const auto& [flags, type] : {std::pair{0, VoxelTypes::uint8}, {2, VoxelTypes::uint8}, {3, VoxelTypes::int8}})
        EXPECT_EQ(read(MrcBytes().set(39, imod).set(40, flags) + voxels8).getDataType(), type) << flags;
}

TEST_F(MrcFileTest, TakesAndTellsWhatCarelessProgramsWrite) {
    MrcBytes mrc;
    for (int word = 17; word <= 19; ++word) mrc.set(word, 0);
    mrc.set(23, 0);
    tool::FileDetails details;
    const HostImage image =
        readImageFile(folder.write("a.ccp4", mrc.text(208, std::string("MAP\0", 4)) + voxels8), details);
    EXPECT_EQ(imageSizeOf(image), (ImageSize{2, 3, 4}));
    EXPECT_EQ(bytesOf(image), voxels8);
    EXPECT_THAT(details.notes, ::testing::ElementsAre(HasSubstr("MAPC, MAPR, MAPS are 0, taken as 1, 2, 3"),
                                                      HasSubstr("MAP and a zero byte"), HasSubstr("stack of images")));
}

TEST_F(MrcFileTest, VolumesOfAStackAreAnAxis) {
    const auto sizeOfStack = [this](int depth) {
        return imageSizeOf(read(MrcBytes().set(23, 401).set(10, depth) + voxels8));
    };
    EXPECT_EQ(sizeOfStack(2), (ImageSize{2, 3, 2, 2}));
    EXPECT_EQ(sizeOfStack(1), (ImageSize{2, 3, 1, 4}));
    EXPECT_EQ(sizeOfStack(3), (ImageSize{2, 3, 4})) << "volumes of a size that does not divide the file's";

    const HostImage stack = randomImage<float>({3, 2, 4, 5}, 1);
    tool::FileDetails details;
    for (const std::string name : {"b.mrc", "c.mrc"}) {
        writeImageFile(folder / name, stack, details);
        const HostImage again = readImageFile(folder / name, details);
        EXPECT_EQ(imageSizeOf(again), imageSizeOf(stack));
        EXPECT_EQ(bytesOf(again), bytesOf(stack));
        EXPECT_EQ(tool::lostDetails(details, "NPY"), "");
    }
}

TEST_F(MrcFileTest, WritesACompleteHeader) {
    const auto written = [this](std::vector<float> voxels, const ImageSize& size, double spacing) {
        HostImage image(VoxelTypes::float32, size, voxels.data());
        image.setSpacing(0, spacing);
        writeImageFile(folder / "b.mrc", image);
        return folder.read("b.mrc").substr(0, 1024);
    };
    MrcBytes header;  // in the byte order of the machines that this is tested on
    for (int word = 14; word <= 16; ++word) header.set(word, 90.0F);
    header.set(4, 2).set(28, 20140).set(56, 1).text(224, "Written by zel" + std::string(66, ' '));
    header.size(2, 1, 2).set(11, 1.0F).set(12, 1.0F).set(13, 2.0F).set(23, 1);
    header.set(20, 1e6F + 1).set(21, 1e6F + 8).set(22, 1e6F + 4).set(55, std::sqrt(26.0F / 3));
    EXPECT_TRUE(written({1e6F + 1, 1e6F + 3, std::nanf(""), 1e6F + 8}, {2, 1, 2}, 0.5) == header + "");
    // Statistics that are not known, a picture instead of a volume, and a cell too long for a float.
    header.size(1, 1, 1).set(11, 0).set(13, 1.0F).set(23, 0).set(20, 0.0F).set(21, -1.0F).set(22, -2.0F).set(55, -1.0F);
    EXPECT_TRUE(written({std::nanf("")}, {1, 1}, 1e300) == header + "");
}

// Start, origin, cell of another size than the image, space group and labels; rows lie along z, sections along y.
TEST_F(MrcFileTest, PlaceCellAndLabelsTravel) {
    MrcBytes header;
    const float cell[] = {20, 90, 60};
    for (int i = 0; i < 3; ++i) {
        header.set(5 + i, i - 7).set(8 + i, 10 * (i + 1)).set(11 + i, cell[i]).set(14 + i, 80.0F + float(i));
        header.set(50 + i, 0.5F - float(i));
    }
    header.set(18, 3).set(19, 2).set(23, 19).set(24, 4).set(56, 10);
    for (int i = 0; i < 10; ++i) header.text(224 + 80 * i, "label " + std::to_string(i));
    tool::FileDetails details;
    const HostImage image = readImageFile(write(header + "more" + voxels8), details);
    EXPECT_EQ(tool::lostDetails(details, "NPY"),
              "voxel size, NSTART, ORIGIN, cell angles, space group 19, 10 labels, extended header of 4 bytes");
    EXPECT_EQ(tool::lostDetails(details, "MRC"), "extended header of 4 bytes");

    details.done = "zel box-filter --kernel 3,3";
    writeImageFile(folder / "b.mrc", image, details);
    const std::string written = folder.read("b.mrc").substr(0, 1024);
    for (const int word : {5, 8, 9, 10, 11, 12, 13, 14, 15, 16, 23, 50, 51, 52}) {
        const auto offset = static_cast<std::size_t>(4 * (word - 1));
        EXPECT_EQ(written.substr(offset, 4), (header + "").substr(offset, 4)) << word;
    }
    EXPECT_EQ(written.substr(20, 8), rawBytes(std::vector<int>{-5, -6})) << "starts along y and z";
    EXPECT_EQ(written.substr(224 + 8 * 80, 7), "label 8");
    EXPECT_EQ(written.substr(224 + 9 * 80), "zel box-filter --kernel 3,3" + std::string(53, ' '));
}

TEST_F(MrcFileTest, RefusalsSayWhatIsWrong) {
    const int huge = 2147483647;
    for (const auto& [mrc, text] : std::initializer_list<std::pair<MrcBytes, const char*>>{
             {MrcBytes().set(53, 0), "it has no 'MAP ' in its header"},
             {MrcBytes().text(212, "\x12\x34\x56\xFF"), "its machine stamp is 12 34 56 ff; 44 44 (little endian) and"},
             {MrcBytes().text(212, noStamp).set(4, 77), "its machine stamp is 00 00 00 00"},
             {MrcBytes().set(4, 4), "its mode is 4; 0 (int8), 1 (int16), 2 (float32), 6 (uint16) and 12 (float16) can"},
             {MrcBytes().set(2, -3), "its size is 2, -3, 4; each has to be above 0"},
             {MrcBytes().set(3, 0), "its size is 2, 3, 0"},
             {MrcBytes().set(1, huge).set(2, huge).set(3, huge), "its size is too large"},
             {MrcBytes().set(1, huge), "its end is missing"},
             {MrcBytes().set(17, 0), "MAPC, MAPR, MAPS are 0, 2, 3; they have to be 1, 2 and 3 in any order, or all 0"},
             {MrcBytes().set(17, 2), "MAPC, MAPR, MAPS are 2, 2, 3"},
             {MrcBytes().set(24, -1), "its extended header has -1 bytes"},
             {MrcBytes().set(24, 16), "the header promises 40 bytes behind it, 24 are there"},
         }) {
        expectRefusals({{mrc + voxels8, text}});
    }
}

}  // namespace zel::test
