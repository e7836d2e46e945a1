#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <complex>
#include <functional>
#include <numeric>

#include "ImageFileTest.h"
#include "NpyBytes.h"

namespace zel::test {

class NpyFileTest : public ImageFileTest {
protected:
    NpyFileTest() : ImageFileTest("a.npy") {}
};

// Two files as NumPy 2 writes them, to the byte.
TEST_F(NpyFileTest, ReadsWhatNumPyWrites) {
    // np.asfortranarray(np.array([[1, 2, 3], [4, 5, 6]], dtype='>i2'))
    const HostImage fortran =
        read(std::string("\x93NUMPY\x01\x00v\x00", 10) + "{'descr': '>i2', 'fortran_order': True, 'shape': (2, 3), }" +
             std::string(59, ' ') + "\n" + std::string("\x00\x01\x00\x04\x00\x02\x00\x05\x00\x03\x00\x06", 12));
    EXPECT_EQ(imageSizeOf(fortran), (ImageSize{3, 2}));
    EXPECT_EQ(readAll<std::int16_t>(fortran), (std::vector<std::int16_t>{1, 2, 3, 4, 5, 6}));

    // np.array([[1 + 2j]], dtype='>c8'), format version 2
    const HostImage complex = read(std::string("\x93NUMPY\x02\x00t\x00\x00\x00", 12) +
                                   "{'descr': '>c8', 'fortran_order': False, 'shape': (1, 1), }" +
                                   std::string(56, ' ') + "\n" + std::string("?\x80\x00\x00@\x00\x00\x00", 8));
    ASSERT_EQ(complex.getDataType(), VoxelTypes::complex64);
    EXPECT_EQ(*static_cast<const std::complex<float>*>(complex.data()), std::complex<float>(1, 2));
}

TEST_F(NpyFileTest, ReadsEveryTypeInBothByteOrders) {
    struct Case {
        const char* code;
        VoxelTypes type;
        std::size_t numberSize;  // the unit of the byte order
    };
    const Case cases[] = {
        {"b1", VoxelTypes::uint8, 1},      {"u1", VoxelTypes::uint8, 1},   {"u2", VoxelTypes::uint16, 2},
        {"u4", VoxelTypes::uint32, 4},     {"u8", VoxelTypes::uint64, 8},  {"i1", VoxelTypes::int8, 1},
        {"i2", VoxelTypes::int16, 2},      {"i4", VoxelTypes::int32, 4},   {"i8", VoxelTypes::int64, 8},
        {"f4", VoxelTypes::float32, 4},    {"f8", VoxelTypes::float64, 8}, {"c8", VoxelTypes::complex64, 4},
        {"c16", VoxelTypes::complex128, 8}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code);
        std::string voxels(6 * helper::getSizeOf(c.type), '\0');
        for (std::size_t i = 0; i < voxels.size(); ++i) voxels[i] = static_cast<char>(i + 1);
        std::string swapped = voxels;
        for (std::size_t i = 0; i < swapped.size(); i += c.numberSize) {
            std::reverse(swapped.data() + i, swapped.data() + i + c.numberSize);
        }
        for (const bool isLittle : {true, false}) {
            const std::string descr = std::string(isLittle ? "<" : ">").append(c.code);
            const HostImage image = read(npyBytes(descr, "(2, 3)", isLittle ? voxels : swapped));
            EXPECT_EQ(image.getDataType(), c.type);
            EXPECT_EQ(bytesOf(image), voxels) << descr;
        }
    }
}

// Element (a, b, c, ...) of the array holds its number in C order, so the image has to count up.
TEST_F(NpyFileTest, PutsTheLastAxisAlongXInBothOrders) {
    const std::vector<std::vector<std::size_t>> shapes{{7},       {3, 4},       {2, 3, 4},
                                                       {130, 70}, {2, 3, 4, 5}, {2, 1, 3, 4, 5}};
    for (const auto& shape : shapes) {
        const std::string text = shapeText(shape);
        const std::size_t count = std::accumulate(shape.begin(), shape.end(), std::size_t{1}, std::multiplies<>());
        SCOPED_TRACE(text);
        std::vector<std::uint16_t> inOrder(count), fortran;
        std::vector<std::size_t> index(shape.size());
        for (std::size_t i = 0; i < count; ++i) {
            inOrder[i] = static_cast<std::uint16_t>(i);
            std::size_t number = 0;
            for (std::size_t axis = 0; axis < shape.size(); ++axis) number = number * shape[axis] + index[axis];
            fortran.push_back(static_cast<std::uint16_t>(number));
            for (std::size_t axis = 0; axis < shape.size() && ++index[axis] == shape[axis]; ++axis) index[axis] = 0;
        }
        const HostImage c = read(npyBytes("<u2", text, rawBytes(inOrder)));
        const HostImage f = read(npyBytes("<u2", text, rawBytes(fortran), true));
        EXPECT_EQ(imageSizeOf(c), imageSizeOf(f));
        for (std::size_t axis = 0; axis < shape.size(); ++axis) {
            EXPECT_EQ(c.getDimension(static_cast<int>(axis)), shape[shape.size() - 1 - axis]);
        }
        EXPECT_EQ(readAll<std::uint16_t>(c), inOrder);
        EXPECT_EQ(readAll<std::uint16_t>(f), inOrder);
    }
}

TEST_F(NpyFileTest, WritesWhatItReads) {
    const HostImage image = randomImage<float>({5, 3, 2}, 1);
    writeImageFile(folder / "a.npy", image);
    const std::string bytes = folder.read("a.npy");
    EXPECT_EQ(bytes.substr(0, 10), std::string("\x93NUMPY\x01\x00\x76\x00", 10));
    EXPECT_EQ(bytes.find("{'descr': '<f4', 'fortran_order': False, 'shape': (2, 3, 5), }"), 10U);
    EXPECT_EQ(bytes.size(), 128 + image.extentBytes());
    EXPECT_EQ(bytes[127], '\n');

    const RowsOnlyImage rows(randomImage<float>({5, 3, 2}, 1));
    writeImageFile(folder / "rows.npy", rows);
    EXPECT_EQ(folder.read("rows.npy"), bytes);

    for (const VoxelTypes type : allVoxelTypes) expectRoundTrip(type, {3, 2, 1, 2, 2}, false);
}

TEST_F(NpyFileTest, ToleratesWhatNumPyTolerates) {
    const std::string voxels = "abcdef";
    for (const std::string& bytes : {
             npyBytes("|u1", "(2, 3)", voxels + "more"),
             npyBytes("u1", "(2L, 3L,)", voxels),
             npyBytes("  {\"shape\":(2,3),\"fortran_order\":False,\"descr\":\"=u1\"}  ", voxels),
         }) {
        EXPECT_EQ(bytesOf(read(bytes)), voxels);
    }
}

TEST_F(NpyFileTest, EveryPrefixIsRefusedByName) {
    const std::string whole = npyBytes("<i2", "(2, 3)", "abcdefghijkl");
    expectEveryPrefixIsRefusedByName(whole);
    EXPECT_THAT(refusal(whole.substr(0, whole.size() - 1)), HasSubstr("promises 12 bytes of voxels, 11 are there"));
}

TEST_F(NpyFileTest, RefusalsSayWhatIsWrong) {
    struct Case {
        std::string bytes;
        std::string text;
    };
    const std::string huge = "(4294967296, 4294967296)";
    const Case cases[] = {
        {"P5 2 2 255 abcd", "it is not an NPY file"},
        {std::string("\x93NUMPY\x04\x00\x10\x00{}", 12), "its NPY version is 4; 1, 2 and 3 can be read"},
        {npyBytes("<f2", "(1, 1)", "ab"), "'<f2' (half precision)"},
        {npyBytes("<U3", "(1, 1)", "abcabcabcabc"), "'<U3'; save it as one of bool, uint8"},
        {npyBytes("<\x1b[2J\n" + std::string(500, 'x'), "(1, 1)", "abc"), "'<?[2J?" + std::string(34, 'x') + "...';"},
        {npyBytes("{'descr': [('x', '<f4')], 'fortran_order': False, 'shape': (1,), }", "abcd"), "records"},
        {npyBytes("<f4", "()", "abcd"), "a single number"},
        {npyBytes("<f4", "(0, 4)", ""), "it is empty"},
        {npyBytes("|u1", "(1, 1, 1, 1, 1, 1)", "a"), "it has 6 axes; images have 1 to 5"},
        {npyBytes("<f8", huge, "abcd"), "its size is too large"},
        {npyBytes("<f8", "(99999999999999999999999,)", "abcd"), "its size is too large"},
        {npyBytes("<f8", "(-1, 4)", "abcd"), "header is damaged"},
        {npyBytes("<f8", "4", "abcd"), "header is damaged"},
        {npyBytes("{'descr': '<f4', 'shape': (1,), }", "abcd"), "header is damaged"},
        {npyBytes("{'descr': '<f4', 'fortran_order': False, 'shape': (1,), } x", "abcd"), "header is damaged"},
        {npyBytes("{'descr': '<f4', 'fortran_order': Maybe, 'shape': (1,), }", "abcd"), "header is damaged"},
    };
    for (const Case& c : cases) EXPECT_THAT(refusal(c.bytes), HasSubstr(c.text));
}

// The files are there in full, as holes that take no place on the disk.
TEST_F(NpyFileTest, RefusesWhatDoesNotFitIntoMemory) {
    const std::string huge = folder.write("huge.npy", npyBytes("|u1", "(4194304, 1048576)", ""));
    if (truncate(huge.c_str(), (off_t{1} << 42U) + 1024) != 0) GTEST_SKIP() << "no files of 4 TiB here";
    EXPECT_THAT(messageOf<FileError>([&] { readImageFile(huge); }),
                HasSubstr("huge.npy: the image takes 4194304 MiB, and this machine has"));

    // Memory that is free, but not for this program.
    const std::string large = folder.write("large.npy", npyBytes("|u1", "(256, 1048576)", ""));
    ASSERT_EQ(truncate(large.c_str(), (off_t{1} << 28U) + 1024), 0);
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit tight{pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + (std::size_t{64} << 20U),
                       before.rlim_max};
    setrlimit(RLIMIT_AS, &tight);
    const std::string message = messageOf<FileError>([&] { readImageFile(large); });
    setrlimit(RLIMIT_AS, &before);
    EXPECT_THAT(message, HasSubstr("large.npy: cannot allocate 268435456 bytes"));
}

TEST_F(NpyFileTest, FilesThatAreNone) {
    const auto message = [](const std::string& path) { return messageOf<FileError>([&] { readImageFile(path); }); };
    EXPECT_THAT(message(folder / "gone.npy"), HasSubstr("gone.npy: no such file or directory"));
    std::filesystem::create_directory(folder / "folder.npy");
    EXPECT_THAT(message(folder / "folder.npy"), HasSubstr("folder.npy: it is a folder, not a file"));
    EXPECT_THAT(message(folder.write("a.gif", "GIF89a")),
                HasSubstr("a.gif: the name has to end in .npy, .png, .tif, .tiff, .mrc or .map"));
    EXPECT_THAT(message(folder.write("npy", "GIF89a")), HasSubstr("the name has to end in"));
}

TEST_F(NpyFileTest, KeepsLinksAndProtectedFilesAsTheyAre) {
    const auto message = [this] { return writeRefusal(VoxelTypes::uint8, {1, 1}); };
    std::filesystem::create_symlink("nowhere.npy", folder / "a.npy");
    EXPECT_THAT(message(), HasSubstr("a.npy: its link leads nowhere: no such file"));
    std::filesystem::remove(folder / "a.npy");
    if (geteuid() == 0) return;  // who may write everywhere
    chmod(folder.write("a.npy", "old").c_str(), 0444);
    EXPECT_THAT(message(), HasSubstr("a.npy: permission denied"));
}

}  // namespace zel::test
