// Loops on the team of workers, and how they do with few threads and at the ends of processes.

#include "host_runtime/Parallel.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

extern "C" int __cxa_atexit(void (*)(void*), void*, void*) noexcept;

namespace zel::host {
namespace {

bool comesToEachItemOnce(std::size_t count = 5000, std::size_t grain = 10) {
    std::vector<int> visits(count);
    parallelFor(count, grain, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) ++visits[i];
    });
    return visits == std::vector<int>(count, 1);
}

// One caller after the other finds workers that wait for it; several at once find some of them busy.
TEST(ParallelTest, ComesToEachItemOnceForAnyNumberOfCallers) {
    const auto loops = [](unsigned seed) {
        std::mt19937 random(seed);
        for (int i = 0; i < 300; ++i) {
            const std::size_t count = random() % 2000, grain = 1 + random() % 50;
            ASSERT_TRUE(comesToEachItemOnce(count, grain)) << count << " items, grain " << grain;
        }
    };
    loops(0);
    std::vector<std::thread> callers;
    for (unsigned seed = 1; seed < 4; ++seed) callers.emplace_back(loops, seed);
    for (std::thread& caller : callers) caller.join();
}

TEST(ParallelTest, TellsItsCallerOfAPieceThatFailed) {
    const auto failing = [](std::size_t begin, std::size_t end) {
        if (begin <= 70 && 70 < end) throw std::runtime_error("item 70");
    };
    for (int i = 0; i < 20; ++i) {
        EXPECT_THROW(parallelFor(100, 1, failing), std::runtime_error);
        EXPECT_TRUE(comesToEachItemOnce(100, 1));
    }
}

// A loop of the child waited for a worker that only the parent has.
TEST(ParallelTest, ChildOfAForkRunsItsLoopsAlone) {
    ASSERT_TRUE(comesToEachItemOnce());  // the parent's workers are there before the first fork
    std::atomic<bool> done = false;
    const auto loops = [&] {
        while (!done) EXPECT_TRUE(comesToEachItemOnce());
    };
    std::thread one(loops), other(loops);
    for (int round = 0; round < 20; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(5);
            const auto self = pthread_self();
            std::size_t items = 0;
            const auto count = [&](std::size_t begin, std::size_t end) {
                items += pthread_equal(self, pthread_self()) != 0 ? end - begin : 0;
            };
            for (int i = 0; i < 20; ++i) parallelFor(100, 1, count);
            _exit(items == 2000 ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    done = true;
    one.join();
    other.join();
}

std::atomic<bool> lingers = false;

/// Called before any library starts, it has the process wait a little at its very end, when no static objects are left.
void waitAtTheEnd(int, char**, char**) {
    __cxa_atexit([](void*) { usleep(lingers ? 3000 : 0); }, nullptr, nullptr);
}
[[gnu::used, gnu::section(".preinit_array")]] void (*const first)(int, char**, char**) = waitAtTheEnd;

/// Its tests limit or end copies of the process, which start anew.
class ParallelDeathTest : public ::testing::Test {
protected:
    ParallelDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// The scheduler was asked after its end, and ended the process by a signal.
TEST_F(ParallelDeathTest, ProcessExitsWhileThreadsRunLoops) {
    const auto loopForEver = [] {
        for (;;) comesToEachItemOnce();
    };
    const auto exitAmidLoops = [&] {
        lingers = true;
        for (int i = 0; i < 3; ++i) std::thread(loopForEver).detach();
        comesToEachItemOnce();
        std::exit(0);
    };
    for (int round = 0; round < 4; ++round) EXPECT_EXIT(exitAmidLoops(), ::testing::ExitedWithCode(0), "");
}

/// Root has no such limit, so the process becomes nobody's.
bool forbidThreads() {
    const rlimit none{0, 0};
    if (setrlimit(RLIMIT_NPROC, &none) != 0 || (geteuid() == 0 && setuid(65534) != 0)) return false;
    try {
        std::thread([] {}).join();
        return false;
    } catch (const std::system_error&) {
        return true;
    }
}

TEST_F(ParallelDeathTest, LoopsDoWithoutThreadsThatCannotBeStarted) {
    const auto loopAlone = [] {
        if (!forbidThreads()) std::_Exit(2);
        std::_Exit(comesToEachItemOnce() && comesToEachItemOnce() ? 0 : 1);
    };
    const auto fine = [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) != 1; };
    EXPECT_EXIT(loopAlone(), fine, "");
}

}  // namespace
}  // namespace zel::host
