#include "ImageFiles/Common/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ImageFiles/Common/FileError.h"
#include "Messages.h"
#include "TemporaryFolder.h"

namespace zel::test {

using std::filesystem::perms;
using tool::AtomicFile;

class AtomicFileTest : public ::testing::Test {
protected:
    perms writeNew(const std::string& name) const {
        AtomicFile file(folder / name);
        file.write("new", 3);
        file.commit();
        EXPECT_EQ(folder.read(name), "new");
        return std::filesystem::status(folder / name).permissions();
    }
    void expectRefusal(const std::string& path, const std::string& why) const {
        EXPECT_THAT(messageOf<tool::FileError>([&] { AtomicFile::checkWritable(path); }), ::testing::HasSubstr(why));
    }

    TemporaryFolder folder;
};

TEST_F(AtomicFileTest, PermissionsComeFromTheUmaskOrTheFileBefore) {
    const mode_t before = umask(027);
    EXPECT_EQ(writeNew("a"), perms{0640});
    umask(before);
    std::filesystem::permissions(folder / "a", perms{0604});
    EXPECT_EQ(writeNew("a"), perms{0604});
}

TEST_F(AtomicFileTest, FollowsLinksAndTakesLongNames) {
    folder.write("target", "old");
    std::filesystem::create_symlink("target", folder / "link");
    writeNew("link");
    EXPECT_EQ(folder.read("target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    writeNew(std::string(255, 'n'));
}

TEST_F(AtomicFileTest, RefusesWhatItCannotReplace) {
    expectRefusal(folder.path(), "there is a folder of that name");
    expectRefusal("/dev/null", "/dev/null: it is not a regular file");
    expectRefusal(folder / "no/a", "no: no such file or directory");
    std::filesystem::create_symlink("nowhere", folder / "link");
    expectRefusal(folder / "link", "link: its link leads nowhere: no such file");
    if (geteuid() == 0) return;  // who may write everywhere
    std::filesystem::permissions(folder.write("protected", "old"), perms{0444});
    expectRefusal(folder / "protected", "protected: permission denied");
    std::filesystem::permissions(folder.path(), perms{0500});
    expectRefusal(folder / "a", "permission denied");
    std::filesystem::permissions(folder.path(), perms{0700});
}

}  // namespace zel::test
