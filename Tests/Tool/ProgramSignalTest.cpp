#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string_view>
#include <thread>

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

/// Opens a pipe once somebody reads it; -1 when nobody does for long.
int openForWriting(const std::string& path) {
    for (int attempt = 0; attempt < 2000; ++attempt) {
        const int pipe = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (pipe >= 0) {
            fcntl(pipe, F_SETFL, 0);
            return pipe;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return -1;
}

bool writeAll(int pipe, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(pipe, bytes.data(), bytes.size());
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

/// The program reads from a pipe, so that the test knows how far it has come.
class ProgramSignalTest : public ::testing::Test {
protected:
    ProgramSignalTest() {
        std::signal(SIGPIPE, SIG_IGN);  // a program that ends early fails the test, not the test program
        mkfifo((folder / "in.npy").c_str(), 0600);
        folder.write("out.npy", "old");
    }

    /// Feeds that many voxels of the input, then sends the signal.
    ProcessResult interrupt(std::size_t voxelCount, int signal) const {
        ZelProcess process(longRun, folder.path());
        const std::string bytes = npyBytes("|u1", shapeText({side, side}), std::string(voxelCount, 'v'));
        const int pipe = openForWriting(folder / "in.npy");
        EXPECT_TRUE(writeAll(pipe, bytes)) << "the program does not read its input";
        process.send(signal);
        close(pipe);
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
