#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>

#include "Messages.h"
#include "NpyBytes.h"
#include "Process.h"
#include "TemporaryFolder.h"

namespace zel::test {

using ::testing::ElementsAre;

namespace {

// So many tiles that the run takes far longer than the signal.
constexpr std::size_t side = 4096;
const std::vector<std::string> longRun{"box-filter", "in.npy", "out.npy", "--kernel", "3,3", "--tile", "4,4"};

}  // namespace

/// The program reads from a pipe, so that the test knows how far it has come.
class ProgramSignalTest : public ::testing::Test {
protected:
    ProgramSignalTest() {
        mkfifo((folder / "in.npy").c_str(), 0600);
        folder.write("out.npy", "old");
    }

    /// Feeds that many voxels of the input, then sends the signal.
    ProcessResult interrupt(std::size_t voxelCount, int signal) const {
        ZelProcess process(longRun, folder.path());
        std::ofstream pipe(folder / "in.npy", std::ios::binary);
        pipe << npyBytes("|u1", shapeText({side, side}), std::string(voxelCount, 'v')) << std::flush;
        process.send(signal);
        return process.wait();
    }

    TemporaryFolder folder;
};

TEST_F(ProgramSignalTest, EndsWhileReadingAndWhileRunning) {
    for (const std::size_t voxelCount : {side, side * side}) {
        for (const int signal : {SIGINT, SIGTERM}) {
            SCOPED_TRACE(::testing::Message() << voxelCount << " voxels, signal " << signal);
            const ProcessResult result = interrupt(voxelCount, signal);
            EXPECT_EQ(result.exitCode, 128 + signal);
            EXPECT_EQ(result.errors, "zel: interrupted\n");
            EXPECT_EQ(folder.read("out.npy"), "old");
            EXPECT_THAT(folder.names(), ElementsAre("in.npy", "out.npy"));
        }
    }
}

}  // namespace zel::test
