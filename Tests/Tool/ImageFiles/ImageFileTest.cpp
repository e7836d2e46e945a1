// What holds for all formats.

#include "ImageFiles/ImageFile.h"

#include <map>

#include "ImageFiles/FormatTest.h"

namespace zel::test {

class ImageFileTest : public ::testing::Test {
protected:
    std::string writeError(const std::string& name, VoxelTypes type, const ImageSize& size) const {
        return messageOf<tool::FileError>([&] { tool::checkWritable(folder / name, type, size); });
    }
    bool isWritable(const std::string& name, VoxelTypes type, const ImageSize& size) const {
        return writeError(name, type, size) == messageOf<tool::FileError>([] {});
    }
    static std::size_t depthFor(const std::string& name) { return name == "a.PNG" ? 1 : 2; }

    const std::vector<std::string> names{"a.npy", "a.PNG", "a.tif", "a.mrc"};
    TemporaryFolder folder;
};

TEST_F(ImageFileTest, RoundTripsKeepEverythingThatTheFormatHolds) {
    std::string bytes;
    for (std::size_t i = 0; i < std::size_t{700} * 500 * 2 * 16; ++i) bytes += static_cast<char>(i * i / 7 + i);
    std::map<std::string, int> counts;
    for (const std::string& name : names) {
        for (const VoxelTypes type : allVoxelTypes) {
            for (const ImageSize size : {ImageSize{1, 1}, ImageSize{700, 500, depthFor(name)}}) {
                if (!isWritable(name, type, size)) continue;
                SCOPED_TRACE(name + " " + std::string(voxelTypeName(type)));
                HostImage image(type, size, bytes.data());
                const bool hasSpacing = name == "a.tif" || name == "a.mrc";
                for (int axis = 0; axis < 3; ++axis) image.setSpacing(axis, hasSpacing ? 0.1 * (axis + 1) : 1);
                writeImageFile(folder / name, image);
                const HostImage copy = readImageFile(folder / name);
                ASSERT_EQ(copy.getDataType(), type);
                ASSERT_EQ(imageSizeOf(copy), size);
                EXPECT_TRUE(bytesOf(copy) == bytesOf(image));
                for (int axis = 0; axis < 3; ++axis) EXPECT_DOUBLE_EQ(copy.getSpacing(axis), image.getSpacing(axis));
                ++counts[name];
            }
        }
    }
    EXPECT_EQ(counts, (std::map<std::string, int>{{"a.npy", 24}, {"a.PNG", 4}, {"a.tif", 20}, {"a.mrc", 8}}));
}

TEST_F(ImageFileTest, RefusesTruncatedFiles) {
    for (const std::string& name : names) {
        writeImageFile(folder / name, randomImage<std::uint16_t>({5, 4, depthFor(name)}, 1));
        expectTruncationsAreRefused(folder / name);
    }
}

// The last row fails, when most of the file is written.
TEST_F(ImageFileTest, AFailingImageLeavesTheOldFileAndNothingElse) {
    for (const std::string& name : names) {
        folder.write(name, "old");
        const RowsOnlyImage image(randomImage<std::uint16_t>({300, 40}, 1), 39);
        EXPECT_THROW(writeImageFile(folder / name, image), std::runtime_error);
        EXPECT_EQ(folder.read(name), "old");
    }
    EXPECT_EQ(folder.names().size(), names.size());
}

TEST_F(ImageFileTest, ContentTellsTheFormatWhereTheNameDoesNot) {
    for (const std::string& name : names) {
        const HostImage image = randomImage<std::uint16_t>({5, 4, depthFor(name)}, 1);
        writeImageFile(folder / name, image);
        std::filesystem::rename(folder / name, folder / "image.data");
        EXPECT_EQ(bytesOf(readImageFile(folder / "image.data")), bytesOf(image)) << name;
    }
}

TEST_F(ImageFileTest, RefusesFilesThatAreNotImages) {
    EXPECT_THAT(readError(folder / "gone.npy"), HasSubstr("gone.npy: no such file or directory"));
    std::filesystem::create_directory(folder / "folder.npy");
    EXPECT_THAT(readError(folder / "folder.npy"), HasSubstr("folder.npy: it is a folder, not a file"));
    EXPECT_THAT(readError(folder.write("a.gif", "GIF89a")),
                HasSubstr("a.gif: by its content it is none of NPY, PNG, TIFF, MRC"));
    for (const auto& [name, content] : {std::pair{"a.JPG", ""}, {"picture", "\xFF\xD8\xFF\xE0"}})
        EXPECT_THAT(readError(folder.write(name, content)), HasSubstr("it is not used here; save the image as .png"));
    for (const std::string name : {"a.npy", "a.PNG", "a.tif"})
        EXPECT_THAT(readError(folder.write(name, "GIF89a, and then some")), HasSubstr(name + ": it is not a"));
}

TEST_F(ImageFileTest, SaysWhyItCannotBeWritten) {
    using enum VoxelTypes;
    const std::tuple<const char*, VoxelTypes, ImageSize, const char*> cases[] = {
        {"a.png", float32, {2, 2}, "PNG holds uint8 and uint16, the image is float32; write .npy, or make it "},
        {"a.png", uint8, {2, 2, 5}, "PNG holds one slice, the image has 5"},
        {"a.mrc", uint8, {2, 2}, "holds int8, int16, uint16 and float32, the image is uint8; write .npy, or make "},
        {"a.mrc", uint8, {2, 2}, "with zel convert --type int16"},
        {"a.mrc", float64, {2, 2}, "--type float32"},
        {"a.mrc", int8, {2, 2, 1, 1, 3}, "up to four axes; write .npy"},
        {"a.tif", complex64, {2, 2}, "the image is complex64; write .npy"},
        {"a.tif", uint8, {2, 2, 2'000'000}, "at most 1000000 slices"},
        {"a.jpeg", uint8, {2, 2}, "JPEG changes values"},
        {"a", uint8, {2, 2}, "has to end in .npy, .png, .tif, .tiff, .mrc, .map, .mrcs, .st, .rec, .ali or .ccp4"},
    };
    for (const auto& [name, type, size, text] : cases) EXPECT_THAT(writeError(name, type, size), HasSubstr(text));
}

}  // namespace zel::test
