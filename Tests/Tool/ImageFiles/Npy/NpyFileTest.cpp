#include <sys/resource.h>
#include <unistd.h>

#include <functional>
#include <numeric>

#include "ImageFiles/FormatTest.h"

namespace zel::test {

class NpyFileTest : public FormatTest {
protected:
    NpyFileTest() : FormatTest("a.npy") {}
};

// np.asfortranarray(np.array([[1, 2, 3], [4, 5, 6]], dtype='>i2')), as NumPy writes it in version 2 of the format.
TEST_F(NpyFileTest, ReadsWhatNumPyWrites) {
    const HostImage image = read(std::string("\x93NUMPY\x02\x00t\x00\x00\x00", 12) +
                                 "{'descr': '>i2', 'fortran_order': True, 'shape': (2, 3), }" + std::string(57, ' ') +
                                 "\n" + std::string("\x00\x01\x00\x04\x00\x02\x00\x05\x00\x03\x00\x06", 12));
    EXPECT_EQ(imageSizeOf(image), (ImageSize{3, 2}));
    EXPECT_EQ(readAll<std::int16_t>(image), (std::vector<std::int16_t>{1, 2, 3, 4, 5, 6}));
}

TEST_F(NpyFileTest, ReadsEveryTypeInBothByteOrders) {
    const auto file = [](const std::string& code) {
        return [=](const std::string& voxels, bool isLittle) {
            return npyBytes((isLittle ? "<" : ">") + code, "(2, 2)", voxels);
        };
    };
    for (const VoxelTypes type : allVoxelTypes) {
        visitVoxelType(type, AllTypes{}, [&]<typename T>() {
            const char kind = voxelTypeName(type)[0];  // of NumPy's codes: u, i, f, c
            expectRead<T>({T(1), T(100), T(T(0) - T(3)), T(77)}, file(kind + std::to_string(sizeof(T))));
        });
    }
    expectRead<std::uint8_t>({0, 1, 1, 0}, file("b1"));
}

// Element (a, b, c, ...) of the array holds its number in C order, so the image has to count up.
TEST_F(NpyFileTest, PutsTheLastAxisAlongXInBothOrders) {
    const std::vector<std::size_t> shapes[] = {{7}, {3, 4}, {2, 3, 4}, {130, 70}, {2, 3, 4, 5}, {2, 1, 3, 4, 5}};
    for (const auto& shape : shapes) {
        std::string text;
        for (const std::size_t size : shape) text += std::to_string(size) + ", ";
        SCOPED_TRACE(text);
        std::vector<std::uint16_t> inOrder(std::accumulate(shape.begin(), shape.end(), 1U, std::multiplies<>()));
        std::iota(inOrder.begin(), inOrder.end(), std::uint16_t{0});
        std::vector<std::uint16_t> fortran;
        for (std::size_t rest : inOrder) {
            std::size_t number = 0, stride = inOrder.size();
            for (const std::size_t size : shape) {
                number += rest % size * (stride /= size);
                rest /= size;
            }
            fortran.push_back(static_cast<std::uint16_t>(number));
        }
        for (const auto& [order, voxels] : {std::pair{"False", inOrder}, {"True", fortran}}) {
            const HostImage image = read(npyBytes("<u2", "(" + text + ")", rawBytes(voxels), order));
            for (std::size_t axis = 0; axis < shape.size(); ++axis)
                EXPECT_EQ(image.getDimension(static_cast<int>(axis)), shape[shape.size() - 1 - axis]);
            EXPECT_EQ(readAll<std::uint16_t>(image), inOrder);
        }
    }
}

TEST_F(NpyFileTest, WritesTheHeaderThatNumPyWrites) {
    const HostImage image = randomImage<float>({5, 3, 2}, 1);
    writeImageFile(folder / "a.npy", image);
    const std::string start =
        std::string("\x93NUMPY\x01\x00\x76\x00", 10) + "{'descr': '<f4', 'fortran_order': False, 'shape': (2, 3, 5), }";
    EXPECT_EQ(folder.read("a.npy"), start + std::string(127 - start.size(), ' ') + "\n" + bytesOf(image));
    writeImageFile(folder / "rows.npy", RowsOnlyImage(randomImage<float>({5, 3, 2}, 1)));
    EXPECT_EQ(folder.read("rows.npy"), folder.read("a.npy"));

    writeImageFile(folder / "a.npy", HostImage(VoxelTypes::uint8, {3, 2, 1, 2, 2}));
    EXPECT_THAT(folder.read("a.npy"),
                HasSubstr("{'descr': '|u1', 'fortran_order': False, 'shape': (2, 2, 1, 2, 3), }"));

    for (const std::string shape : {"(2,)", "(1,)", "(1, 2)", "(1, 1, 2)", "(1, 1, 1, 1, 2)"}) {
        tool::FileDetails details;
        const HostImage same = readImageFile(write(npyBytes("|u1", shape, "ab")), details);
        writeImageFile(folder / "a.npy", same, details);
        EXPECT_THAT(folder.read("a.npy"), HasSubstr("'shape': " + shape + ", }"));
    }
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

TEST_F(NpyFileTest, RefusalsSayWhatIsWrong) {
    const std::string damaged = "header is damaged", tooLarge = "its size is too large";
    expectRefusals({
        {std::string("\x93NUMPY\x04\x00\x10\x00{}", 12), "its NPY version is 4; 1, 2 and 3 can be read"},
        {npyBytes("<i2", "(2, 3)", "abcdefghijk"), "promises 12 bytes of voxels, 11 are there"},
        {npyBytes("<f2", "(1, 1)", "ab"), "'<f2' (half precision)"},
        {npyBytes("<U3", "(1, 1)", "abcabcabcabc"), "'<U3'; save it as one of bool, uint8"},
        {npyBytes("<\x1b[2J\n" + std::string(500, 'x'), "(1, 1)", "abc"), "'<?[2J?" + std::string(34, 'x') + "...';"},
        {npyBytes("{'descr': [('x', '<f4')], 'fortran_order': False, 'shape': (1,), }", "abcd"), "records"},
        {npyBytes("<f4", "()", "abcd"), "a single number"},
        {npyBytes("<f4", "(0, 4)", ""), "it is empty"},
        {npyBytes("|u1", "(1, 1, 1, 1, 1, 1)", "a"), "it has 6 axes; images have 1 to 5"},
        {npyBytes("<f8", "(4294967296, 4294967296)", "abcd"), tooLarge},
        {npyBytes("<f8", "(99999999999999999999999,)", "abcd"), tooLarge},
        {npyBytes("<f8", "(-1, 4)", "abcd"), damaged},
        {npyBytes("<f8", "4", "abcd"), damaged},
        {npyBytes("<f8", "(1,)", "abcdefgh", "Maybe"), damaged},
        {npyBytes("{'descr': '<f4', 'shape': (1,), }", "abcd"), damaged},
        {npyBytes("{'descr': '<f4', 'fortran_order': False, 'shape': (1,), } x", "abcd"), damaged},
    });
}

// The files are complete, but sparse: they occupy no space on the disk.
TEST_F(NpyFileTest, RefusesWhatDoesNotFitIntoMemory) {
    const std::string huge = write(npyBytes("|u1", "(4194304, 1048576)", ""));
    if (truncate(huge.c_str(), (off_t{1} << 42U) + 1024) != 0) GTEST_SKIP() << "no files of 4 TiB here";
    EXPECT_THAT(readError(huge), HasSubstr("a.npy: the image takes 4194304 MiB, and this machine has"));

    // Memory that is free, but not for this program.
    const std::string large = write(npyBytes("|u1", "(256, 1048576)", ""));
    std::filesystem::resize_file(large, (1U << 28U) + 1024);
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit tight{pages * 4096 + (std::size_t{64} << 20U), before.rlim_max};
    setrlimit(RLIMIT_AS, &tight);
    const std::string message = readError(large);
    setrlimit(RLIMIT_AS, &before);
    EXPECT_THAT(message, HasSubstr("a.npy: cannot allocate 268435456 bytes"));
}

}  // namespace zel::test
