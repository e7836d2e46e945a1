#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "ImageFileTest.h"
#include "NpyBytes.h"

namespace zel::test {

namespace {

/// An MRC file put together by hand: 2 columns, 3 rows and 4 sections, unless changed.
class MrcBytes {
public:
    explicit MrcBytes(bool isLittle = true) : isLittle_(isLittle), header_(1024, '\0') {
        for (const auto& [word, value] : {std::pair{1, 2}, {2, 3}, {3, 4}, {8, 2}, {9, 3}, {10, 4}}) set(word, value);
        for (int axis = 0; axis < 3; ++axis) set(17 + axis, axis + 1);
        header_.replace(208, 4, "MAP ");
        stamp(isLittle ? std::string("\x44\x44\0\0", 4) : std::string("\x11\x11\0\0", 4));
    }

    /// Sets a word of the header, counted from 1 as the description of the format does.
    MrcBytes& set(int word, std::uint32_t value) {
        header_.replace(static_cast<std::size_t>(word - 1) * 4, 4, number(value, 4));
        return *this;
    }
    MrcBytes& set(int word, int value) { return set(word, static_cast<std::uint32_t>(value)); }
    MrcBytes& set(int word, float value) { return set(word, std::bit_cast<std::uint32_t>(value)); }
    MrcBytes& stamp(const std::string& bytes) {
        header_.replace(212, 4, bytes);
        return *this;
    }

    std::string number(std::uint32_t value, std::size_t size) const {
        std::string text;
        for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(value >> 8 * (isLittle_ ? i : size - 1 - i));
        return text;
    }
    const std::string& header() const { return header_; }

private:
    bool isLittle_;
    std::string header_;
};

template <typename T>
T wordAt(const std::string& bytes, std::size_t word) {
    T value{};
    std::memcpy(&value, bytes.data() + (word - 1) * 4, sizeof value);
    return value;
}

}  // namespace

class MrcFileTest : public ImageFileTest {
protected:
    MrcFileTest() : ImageFileTest("a.mrc") {}

    std::string voxels8 = "abcdefghijklmnopqrstuvwx";
};

TEST_F(MrcFileTest, ReadsEveryModeInBothByteOrders) {
    const auto check = [this]<typename T>(int mode, std::size_t size, const std::vector<std::uint32_t>& codes,
                                          const std::vector<T>& expected) {
        for (const bool isLittle : {true, false}) {
            for (const bool hasStamp : {true, false}) {
                SCOPED_TRACE(::testing::Message() << "mode " << mode << (isLittle ? " little" : " big"));
                MrcBytes mrc(isLittle);
                mrc.set(1, 2).set(2, 2).set(3, 1).set(4, mode);
                if (!hasStamp) mrc.stamp(std::string(4, '\0'));
                std::string bytes = mrc.header();
                for (const std::uint32_t code : codes) bytes += mrc.number(code, size);
                const HostImage image = read(bytes + "trailing");
                ASSERT_EQ(image.getDataType(), voxelTypeOf<T>);
                EXPECT_EQ(readAll<T>(image), expected);
            }
        }
    };
    check(0, 1, {1, 0x80, 0xFF, 5}, std::vector<std::int8_t>{1, -128, -1, 5});
    check(1, 2, {1, 0x8000, 0xFFFE, 5}, std::vector<std::int16_t>{1, -32768, -2, 5});
    check(2, 4, {0x3F800000, 0xC0490FDB, 0, 0x7F7FFFFF}, std::vector<float>{1, -3.14159274F, 0, 3.40282347e38F});
    check(6, 2, {1, 0x8000, 0xFFFE, 5}, std::vector<std::uint16_t>{1, 32768, 65534, 5});
    // Half precision: 1, -65504 (the lowest), 2^-24 (the smallest), infinity.
    check(12, 2, {0x3C00, 0xFBFF, 0x0001, 0x7C00},
          std::vector<float>{1, -65504, std::ldexp(1.0F, -24), std::numeric_limits<float>::infinity()});
}

// The voxel of column c, row r and section s lies where the axes tell, whatever their order.
TEST_F(MrcFileTest, PutsTheAxesInOrderAndKeepsTheSpacing) {
    std::array<int, 3> axes{1, 2, 3};
    do {
        SCOPED_TRACE(::testing::PrintToString(axes));
        MrcBytes mrc;
        for (int i = 0; i < 3; ++i) {
            mrc.set(17 + i, axes[static_cast<std::size_t>(i)]).set(8 + i, 10 * (i + 1)).set(11 + i, 3.7F);
        }
        mrc.set(24, 80);  // an extended header
        const HostImage image = read(mrc.header() + std::string(80, '!') + voxels8);
        for (std::size_t i = 0; i < 24; ++i) {
            const std::array<std::size_t, 3> inFile{i % 2, i / 2 % 3, i / 6};
            std::array<std::size_t, 3> at{};
            for (std::size_t axis = 0; axis < 3; ++axis) at[static_cast<std::size_t>(axes[axis] - 1)] = inFile[axis];
            char voxel = 0;
            ASSERT_TRUE(image.readRow(1, &voxel, at[0], at[1], at[2], 0, 0));
            EXPECT_EQ(voxel, voxels8[i]);
        }
        EXPECT_EQ(image.getSpacing(0), 0.37);
        EXPECT_EQ(image.getSpacing(1), 0.185);
    } while (std::ranges::next_permutation(axes).found);

    const HostImage plain = read(MrcBytes().set(11, -5.0F).set(12, std::nanf("")).header() + voxels8);
    for (int axis = 0; axis < 3; ++axis) EXPECT_EQ(plain.getSpacing(axis), 1);
}

TEST_F(MrcFileTest, BytesHaveNoSignWhereTheirProgramSaysSo) {
    const auto typeWith = [this](int program, int flags) {
        return read(MrcBytes().set(39, program).set(40, flags).header() + voxels8).getDataType();
    };
    EXPECT_EQ(typeWith(1146047817, 0), VoxelTypes::uint8);
    EXPECT_EQ(typeWith(1146047817, 2), VoxelTypes::uint8);
    EXPECT_EQ(typeWith(1146047817, 3), VoxelTypes::int8);
    EXPECT_EQ(typeWith(0, 0), VoxelTypes::int8);
}

TEST_F(MrcFileTest, WritesWhatItReads) {
    for (const VoxelTypes type : {VoxelTypes::int8, VoxelTypes::int16, VoxelTypes::uint16, VoxelTypes::float32}) {
        for (const ImageSize size : {ImageSize{1, 1}, ImageSize{37, 23}, ImageSize{19, 7, 5}}) {
            expectRoundTrip(type, size, true);
        }
    }
}

TEST_F(MrcFileTest, WritesAWholeHeader) {
    std::vector<float> voxels{1e6F + 1, 1e6F + 3, std::nanf(""), 1e6F + 8};
    writeImageFile(folder / "b.mrc", HostImage(VoxelTypes::float32, {2, 1, 2}, voxels.data()));
    const std::string bytes = folder.read("b.mrc");
    ASSERT_EQ(bytes.size(), 1024U + 16);
    std::vector<int> words;
    for (const std::size_t word : {1, 2, 3, 4, 8, 9, 10, 17, 18, 19, 23, 24, 28, 56}) {
        words.push_back(wordAt<std::int32_t>(bytes, word));
    }
    EXPECT_EQ(words, (std::vector<int>{2, 1, 2, 2, 2, 1, 2, 1, 2, 3, 1, 0, 20140, 1}));
    EXPECT_EQ(wordAt<float>(bytes, 20), 1e6F + 1);
    EXPECT_EQ(wordAt<float>(bytes, 21), 1e6F + 8);
    EXPECT_EQ(wordAt<float>(bytes, 22), 1e6F + 4);
    EXPECT_FLOAT_EQ(wordAt<float>(bytes, 55), std::sqrt(26.0F / 3));
    EXPECT_EQ(bytes.substr(208, 4), "MAP ");
    EXPECT_EQ(bytes.substr(1024), rawBytes(voxels));

    std::vector<float> none{std::nanf("")};
    HostImage strange(VoxelTypes::float32, {1, 1}, none.data());
    strange.setSpacing(0, 1e300);
    writeImageFile(folder / "b.mrc", strange);
    const std::string unknown = folder.read("b.mrc");
    EXPECT_LT(wordAt<float>(unknown, 21), wordAt<float>(unknown, 20));
    EXPECT_LT(wordAt<float>(unknown, 55), 0);
    EXPECT_EQ(wordAt<std::int32_t>(unknown, 23), 0) << "a picture, not a volume";
    EXPECT_EQ(wordAt<float>(unknown, 11), 0) << "more than a float can hold";
}

TEST_F(MrcFileTest, EveryPrefixIsRefusedByName) {
    const std::string whole = MrcBytes().set(24, 16).header() + std::string(16, '!') + voxels8;
    expectEveryPrefixIsRefusedByName(whole);
    EXPECT_THAT(refusal(whole.substr(0, whole.size() - 1)), HasSubstr("promises 40 bytes behind it, 39 are there"));
}

TEST_F(MrcFileTest, RefusalsSayWhatIsWrong) {
    struct Case {
        MrcBytes mrc;
        const char* text;
    };
    const int huge = 2147483647;
    const Case cases[] = {
        {MrcBytes().set(53, 0), "it has no 'MAP ' in its header"},
        {MrcBytes().stamp("\x12\x34\x56\xFF"), "its machine stamp is 12 34 56 ff; 44 44 (little endian) and"},
        {MrcBytes().stamp(std::string(4, '\0')).set(4, 77), "its machine stamp is 00 00 00 00"},
        {MrcBytes().set(4, 4), "its mode is 4; 0 (int8), 1 (int16), 2 (float32), 6 (uint16) and 12 (float16) can"},
        {MrcBytes().set(2, -3), "its size is 2, -3, 4; each has to be above 0"},
        {MrcBytes().set(3, 0), "its size is 2, 3, 0"},
        {MrcBytes().set(1, huge).set(2, huge).set(3, huge), "its size is too large"},
        {MrcBytes().set(1, huge), "its end is missing"},
        {MrcBytes().set(17, 0), "MAPC, MAPR, MAPS are 0, 2, 3; they have to be 1, 2 and 3"},
        {MrcBytes().set(17, 2), "MAPC, MAPR, MAPS are 2, 2, 3"},
        {MrcBytes().set(24, -1), "its extended header has -1 bytes"},
        {MrcBytes().set(24, huge), "its end is missing"},
    };
    for (const Case& c : cases) EXPECT_THAT(refusal(c.mrc.header() + voxels8), HasSubstr(c.text));
}

TEST_F(MrcFileTest, RefusesToWriteWhatItCannotHold) {
    EXPECT_THAT(writeRefusal(VoxelTypes::uint8, {2, 2}),
                HasSubstr("MRC holds int8, int16, uint16 and float32, the image is uint8; write .npy, or make it fit "
                          "with zel convert --type int16"));
    EXPECT_THAT(writeRefusal(VoxelTypes::float64, {2, 2}), HasSubstr("--type float32"));
    EXPECT_THAT(writeRefusal(VoxelTypes::int8, {2, 2, 1, 3}), HasSubstr("up to three axes; write .npy"));
}

}  // namespace zel::test
