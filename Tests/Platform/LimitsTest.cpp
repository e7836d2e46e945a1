// How the host device does with what the system grants: few threads, little memory, and the ends of processes.

#include <malloc.h>
#include <nppi_filtering_functions.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <thread>
#include <vector>

#include "NppImage.h"
#include "ProcessMemory.h"
#include "host_runtime/Parallel.h"

extern "C" int __cxa_atexit(void (*)(void*), void*, void*) noexcept;

namespace zel::test {
namespace {

using host::parallelFor;

bool comesToEachItemOnce() {
    std::vector<int> visits(5000);
    parallelFor(visits.size(), 10, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) ++visits[i];
    });
    return visits == std::vector<int>(visits.size(), 1);
}

[[noreturn]] void loopForEver() {
    for (;;) comesToEachItemOnce();
}

std::atomic<bool> lingers = false;

/// Called before any library starts, it has the process wait a little at its very end, when no static objects are left.
void waitAtTheEnd(int, char**, char**) {
    __cxa_atexit([](void*) { usleep(lingers ? 3000 : 0); }, nullptr, nullptr);
}
[[gnu::used, gnu::section(".preinit_array")]] void (*const first)(int, char**, char**) = waitAtTheEnd;

/// Its tests limit or end copies of the process, which start anew.
class LimitsDeathTest : public ::testing::Test {
protected:
    LimitsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// The scheduler was asked after its end, and ended the process by a signal.
TEST_F(LimitsDeathTest, ProcessExitsWhileThreadsRunLoops) {
    const auto exitAmidLoops = [] {
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

TEST_F(LimitsDeathTest, LoopsDoWithoutThreadsThatCannotBeStarted) {
    const auto loopAlone = [] {
        if (!forbidThreads()) std::_Exit(2);
        std::_Exit(comesToEachItemOnce() && comesToEachItemOnce() ? 0 : 1);
    };
    const auto fine = [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) != 1; };
    EXPECT_EXIT(loopAlone(), fine, "");
}

// A loop of the child waited for a worker that only the parent has.
TEST(Limits, ChildOfAForkRunsItsLoopsAlone) {
    std::atomic<bool> done = false;
    std::vector<std::thread> others;
    for (int i = 0; i < 2; ++i)
        others.emplace_back([&] {
            while (!done) EXPECT_TRUE(comesToEachItemOnce());
        });
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
    for (std::thread& other : others) other.join();
}

TEST_F(LimitsDeathTest, FilterWithoutMemoryForItsScratchIsRefused) {
    if (ProcessMemory().isSanitized()) GTEST_SKIP() << "no limit can be set";
    const auto filterWithoutMemory = [] {
        mallopt(M_ARENA_MAX, 1);  // further ones reserve address space that the limit would not reach
        constexpr NppiSize size{1200, 1200};
        NppImage<float> src(size), dst(size);
        const auto filter = [&] {
            return nppiFilterBoxBorder_32f_C1R_Ctx(src.device(), src.step(), size, {0, 0}, dst.device(), dst.step(),
                                                   size, {500, 500}, {250, 250}, NPP_BORDER_REPLICATE, {});
        };
        rlimit before{};
        getrlimit(RLIMIT_AS, &before);
        const rlimit little{static_cast<rlim_t>(ProcessMemory().addressSpaceBytes + (1 << 19)), before.rlim_max};
        setrlimit(RLIMIT_AS, &little);
        const NppStatus without = filter();
        setrlimit(RLIMIT_AS, &before);
        std::_Exit(without == NPP_MEMORY_ALLOCATION_ERR && filter() == NPP_SUCCESS ? 0 : 1);
    };
    EXPECT_EXIT(filterWithoutMemory(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zel::test
