#include "ImageFiles/Common/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ImageFiles/Common/FileError.h"
#include "ImageFiles/Common/TemporaryFile.h"
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

TEST_F(AtomicFileTest, ClearsWhatKilledRunsLeft) {
    std::string used;
    const int descriptor = tool::makeTemporaryFile(folder / "a", used);
    const std::vector<std::string> others{".a.abc123", ".a.zel-abc12", ".a.zel-abc12~", "a.zel-abc123"};
    for (const std::string& name : others) folder.write(name, "not ours");
    folder.write(".a.zel-abc123", "of a run that was killed");
    writeNew("a");
    std::vector<std::string> expected = others;
    expected.insert(expected.end(), {"a", std::filesystem::path(used).filename()});
    EXPECT_THAT(folder.names(), ::testing::UnorderedElementsAreArray(expected));
    close(descriptor);
}

TEST_F(AtomicFileTest, OwnersStayWhereAllowedAndAreRespectedInStickyFolders) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files to others";
    struct stat status {};
    const auto become = [&](uid_t user) { return setresgid(user, user, user) + setresuid(user, user, user); };
    chown(folder.write("a", "old").c_str(), 123, 456);
    std::filesystem::permissions(folder / "a", perms{0664});
    writeNew("a");
    EXPECT_EQ(stat((folder / "a").c_str(), &status), 0);
    EXPECT_TRUE(status.st_uid == 123 && status.st_gid == 456 && (status.st_mode & 0777U) == 0664);

    // Another user's file keeps neither owner nor group, and its group gets no more than everybody.
    std::filesystem::permissions(folder / "a", perms{0676});
    std::filesystem::permissions(folder.path(), perms{0777});
    EXPECT_EXIT(exit(become(789) != 0 || writeNew("a") != perms{0666}), ::testing::ExitedWithCode(0), "");
    std::filesystem::permissions(folder / "a", perms{0666});
    std::filesystem::permissions(folder.path(), perms{01777});
    const auto refuse = [&] { expectRefusal(folder / "a", "is sticky: only the file's owner may replace it"); };
    EXPECT_EXIT(exit(become(456) != 0 || (refuse(), HasFailure())), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit(become(789) != 0 || (writeNew("a"), HasFailure())), ::testing::ExitedWithCode(0), "");
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
