#include "ImageFiles/Common/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/ImageFile.h"
#include "Messages.h"
#include "TemporaryFolder.h"
#include "TestImages.h"

namespace zel::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;
using tool::AtomicFile;
using tool::FileError;

namespace {

mode_t permissions(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 0777U;
}

void writeWhole(const std::string& path, const std::string& text) {
    AtomicFile file(path);
    file.write(text.data(), text.size());
    file.commit();
}

}  // namespace

TEST(AtomicFileTest, AppearsOnlyWhenWhole) {
    const TemporaryFolder folder;
    folder.write("a", "old");
    {
        AtomicFile file(folder / "a");
        file.write("new", 3);
        EXPECT_EQ(folder.read("a"), "old");
        EXPECT_EQ(folder.names().size(), 2U);
    }
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_THAT(folder.names(), ElementsAre("a"));

    writeWhole(folder / "a", "new");
    EXPECT_EQ(folder.read("a"), "new");
    EXPECT_THAT(folder.names(), ElementsAre("a"));
}

// The last row fails, when most of the file is written.
TEST(AtomicFileTest, AFailingImageLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    for (const std::string name : {"a.npy", "a.png", "a.tif", "a.mrc"}) {
        folder.write(name, "old");
        const RowsOnlyImage image(randomImage<std::uint8_t>({300, 40}, 1), 39);
        EXPECT_THROW(tool::writeImageFile(folder / name, image), std::runtime_error);
        EXPECT_EQ(folder.read(name), "old");
    }
    EXPECT_THAT(folder.names(), UnorderedElementsAre("a.npy", "a.png", "a.tif", "a.mrc"));
}

TEST(AtomicFileTest, PermissionsComeFromTheUmaskOrTheFileBefore) {
    const TemporaryFolder folder;
    const mode_t before = umask(027);
    writeWhole(folder / "a", "x");
    umask(before);
    EXPECT_EQ(permissions(folder / "a"), 0640U);
    chmod((folder / "a").c_str(), 0604);
    writeWhole(folder / "a", "y");
    EXPECT_EQ(permissions(folder / "a"), 0604U);
}

TEST(AtomicFileTest, FollowsLinksAndTakesLongNames) {
    const TemporaryFolder folder;
    folder.write("target", "old");
    ASSERT_EQ(symlink("target", (folder / "link").c_str()), 0);
    writeWhole(folder / "link", "new");
    EXPECT_EQ(folder.read("target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));

    const std::string longest(255, 'n');
    writeWhole(folder / longest, "long");
    EXPECT_EQ(folder.read(longest), "long");
}

TEST(AtomicFileTest, RefusesWhatIsNoFile) {
    const TemporaryFolder folder;
    const auto message = [](const std::string& path) {
        return messageOf<FileError>([&] { AtomicFile::checkWritable(path); });
    };
    EXPECT_THAT(message(folder.path()), HasSubstr("there is a folder of that name"));
    EXPECT_THAT(message("/dev/null"), HasSubstr("/dev/null: it is not a regular file"));
    EXPECT_THAT(message(folder / "no/a"), HasSubstr("no: no such file or directory"));
    if (geteuid() == 0) return;  // who may write everywhere
    chmod(folder.path().c_str(), 0500);
    EXPECT_THAT(message(folder / "a"), HasSubstr("permission denied"));
    chmod(folder.path().c_str(), 0700);
}

}  // namespace zel::test
