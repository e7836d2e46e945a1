#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "DebugEnvironment.h"
#include "Messages.h"
#include "zel/HostImage.h"
#include "zel/algorithms.h"

using namespace zel;
using namespace zel::cuda;

namespace {

const auto allInfos = []<typename... Algo>(TypeList<Algo...>) {
    return std::vector<AlgoInfo*>{Algo::getClassInfo()...};
}(Algorithms{});

/// Whether each algorithm has so many runners.
bool runnersOfEach(std::size_t count) {
    return std::ranges::all_of(allInfos, [=](const AlgoInfo* info) { return info->runnerCount() == count; });
}

/// Stands in for standard error; notes what is printed, and whether there were runners by then.
struct WatchedStandardError {
    WatchedStandardError() {
        const auto write = [](void* self, const char* printed, std::size_t length) {
            auto* const watched = static_cast<WatchedStandardError*>(self);
            watched->text.append(printed, length);
            watched->runnersSeen = watched->runnersSeen || !runnersOfEach(0);
            return static_cast<ssize_t>(length);
        };
        stderr = fopencookie(this, "w", {.read = nullptr, .write = write, .seek = nullptr, .close = nullptr});
        setvbuf(stderr, nullptr, _IONBF, 0);
    }
    ~WatchedStandardError() {
        std::fclose(stderr);
        stderr = original;
    }

    std::FILE* const original = stderr;
    std::string text;
    bool runnersSeen = false;
};

using Library = std::unique_ptr<void, int (*)(void*)>;

Library loadLibrary() {
    return {dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_LOCAL), dlclose};
}

}  // namespace

// The debug facility is there before any runner is.
TEST(LibraryTest, SetsUpDebuggingAndAllRunnersAtEachLoadAndTakesThemBackAtUnload) {
    const test::DebugEnvironment environment{{"KESTA_DEBUG", "1"},
                                             {"KESTA_DEBUG_LEVEL", "-1"},
                                             {"KESTA_DEBUG_FUNC_FILTER", "f g"},
                                             {"KESTA_DEBUG_PACKAGE_FILTER", "p"}};
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_TRUE(runnersOfEach(0));
        {
            const WatchedStandardError watched;
            const Library library = loadLibrary();
            ASSERT_NE(library, nullptr) << dlerror();
            EXPECT_FALSE(watched.runnersSeen);
            EXPECT_EQ(watched.text,
                      "Found KESTA_DEBUG -> Enabling debugging output\n"
                      "   level set to KESTA_DEBUG_LEVEL = NONE\n"
                      "   set funcfilter from KESTA_DEBUG_FUNC_FILTER = (f, g, )\n"
                      "   set packagefilter from KESTA_DEBUG_PACKAGE_FILTER = (p, )\n");
            EXPECT_TRUE(runnersOfEach(1));
            for (const AlgoInfo* info : allInfos) EXPECT_EQ(info->availableRunner()->runnerKind(), 3);
        }
        EXPECT_EQ(dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something keeps the library in memory";
    }
    EXPECT_TRUE(runnersOfEach(0));
}

TEST(LibraryTest, ExportsItsFourFunctionsAndNothingElseIsNeeded) {
    const Library library = loadLibrary();
    const auto function = [&](const char* name) {
        void* const found = dlsym(library.get(), name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    };
    reinterpret_cast<void (*)()>(function("zelCudaInit"))();
    EXPECT_TRUE(reinterpret_cast<bool (*)()>(function("zelIsCudaGpuAvailable"))());
    auto* const stream = reinterpret_cast<CUstream_st* (*)()>(function("zelCudaAllocateCudaStream"))();
    EXPECT_NE(stream, nullptr);
    reinterpret_cast<void (*)(CUstream_st*)>(function("zelCudaDeleteCudaStream"))(stream);
}

TEST(LibraryTest, RunnersRefuseAlgorithmsOfOtherClasses) {
    const Library library = loadLibrary();
    CudaErosion2d other;
    EXPECT_THROW(CudaMedianFilter2d::getClassInfo()->availableRunner()->run(&other), UnexpectedError);
}
