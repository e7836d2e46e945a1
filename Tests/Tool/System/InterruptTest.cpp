#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <future>
#include <thread>

#include "ProgramTest.h"

namespace zel::test {

using namespace std::chrono_literals;

/// The program reads from a pipe, so that the test knows how far it has come.
class InterruptTest : public ProgramTest {
protected:
    InterruptTest() {
        std::signal(SIGPIPE, SIG_IGN);  // a program that ends early fails the test, not the test program
        mkfifo((folder / "in.npy").c_str(), 0600);
        folder.write("out.npy", "old");
    }

    /// Sends the signal while the program reads, or while it filters: in tiles so small that this takes minutes.
    ProgramResult interrupt(bool isReading, int signal) const {
        constexpr std::size_t side = 4096;
        auto run = std::async(std::launch::async, [this] {
            return zel("box-filter in.npy out.npy --kernel 3,3 --tile 2,2", "echo $$ > id; ");
        });
        std::ofstream pipe(folder / "in.npy");  // waits for the program
        pipe << npyBytes("|u1", "(4096, 4096)", std::string(isReading ? side : side * side, 'v')) << std::flush;
        if (!isReading) {
            pipe.close();
            std::this_thread::sleep_for(500ms);
        }
        kill(std::stoi(folder.read("id")), signal);
        return run.get();
    }
};

TEST_F(InterruptTest, EndsReadingAndFilteringAndLeavesTheOldFile) {
    for (const bool isReading : {true, false}) {
        for (const int signal : {SIGINT, SIGTERM}) {
            SCOPED_TRACE(::testing::Message() << (isReading ? "reading" : "filtering") << ", signal " << signal);
            const auto start = std::chrono::steady_clock::now();
            expectOneErrorLine(interrupt(isReading, signal), 128 + signal, "zel: interrupted\n");
            EXPECT_LT(std::chrono::steady_clock::now() - start, 20s);
            EXPECT_EQ(folder.read("out.npy"), "old");
            EXPECT_THAT(folder.names(), ElementsAre("id", "in.npy", "out.npy"));
        }
    }
}

// As nohup and shells do it for programs in the background.
TEST_F(InterruptTest, SignalsIgnoredAtTheStartStayIgnored) {
    auto run = std::async(std::launch::async, [this] { return zel("info in.npy", "trap '' INT; echo $$ > id; "); });
    std::ofstream pipe(folder / "in.npy");
    pipe << npyBytes("|u1", "(2, 2)", "ab") << std::flush;
    kill(std::stoi(folder.read("id")), SIGINT);
    std::this_thread::sleep_for(20ms);
    pipe << "cd" << std::flush;
    pipe.close();
    EXPECT_EQ(run.get().exitCode, 0);
}

}  // namespace zel::test
