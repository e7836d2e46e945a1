#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
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

std::vector<std::size_t> runnerCounts() {
    std::vector<std::size_t> counts;
    for (const AlgoInfo* info : allInfos) counts.push_back(info->runnerCount());
    return counts;
}

/// Stands in for standard error, and notes for each text whether runners were registered when it was printed.
class WatchedStandardError {
public:
    WatchedStandardError() : original_(stderr) {
        stderr = fopencookie(this, "w", {.read = nullptr, .write = &write, .seek = nullptr, .close = nullptr});
        setvbuf(stderr, nullptr, _IONBF, 0);
    }
    ~WatchedStandardError() {
        std::fclose(stderr);
        stderr = original_;
    }
    WatchedStandardError(const WatchedStandardError&) = delete;
    WatchedStandardError& operator=(const WatchedStandardError&) = delete;

    const std::string& text() const { return text_; }
    bool runnersSeen() const { return runnersSeen_; }

private:
    static ssize_t write(void* self, const char* text, std::size_t length) {
        auto* const watched = static_cast<WatchedStandardError*>(self);
        watched->text_.append(text, length);
        watched->runnersSeen_ = watched->runnersSeen_ || runnerCounts() != std::vector<std::size_t>(allInfos.size(), 0);
        return static_cast<ssize_t>(length);
    }

    std::FILE* original_;
    std::string text_;
    bool runnersSeen_ = false;
};

struct CloseLibrary {
    void operator()(void* handle) const { dlclose(handle); }
};

std::unique_ptr<void, CloseLibrary> loadLibrary() {
    return std::unique_ptr<void, CloseLibrary>(dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_LOCAL));
}

}  // namespace

// The debug facility is there before any runner is.
TEST(LibraryTest, SetsUpDebuggingAndAllRunnersAtEachLoadAndTakesThemBackAtUnload) {
    const test::DebugEnvironment environment{{"KESTA_DEBUG", "1"},
                                             {"KESTA_DEBUG_LEVEL", "-1"},
                                             {"KESTA_DEBUG_FUNC_FILTER", "f g"},
                                             {"KESTA_DEBUG_PACKAGE_FILTER", "p"}};
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_EQ(runnerCounts(), std::vector<std::size_t>(allInfos.size(), 0));
        {
            const WatchedStandardError watched;
            const auto library = loadLibrary();
            ASSERT_NE(library, nullptr) << dlerror();
            EXPECT_FALSE(watched.runnersSeen());
            EXPECT_EQ(watched.text(),
                      "Found KESTA_DEBUG -> Enabling debugging output\n"
                      "   level set to KESTA_DEBUG_LEVEL = NONE\n"
                      "   set funcfilter from KESTA_DEBUG_FUNC_FILTER = (f, g, )\n"
                      "   set packagefilter from KESTA_DEBUG_PACKAGE_FILTER = (p, )\n");
            EXPECT_EQ(runnerCounts(), std::vector<std::size_t>(allInfos.size(), 1));
            for (const AlgoInfo* info : allInfos) {
                Runnable* const runner = info->availableRunner();
                ASSERT_NE(runner, nullptr) << info->className();
                EXPECT_EQ(runner->runnerKind(), 3);
            }
        }
        EXPECT_EQ(dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something keeps the library in memory";
    }
    EXPECT_EQ(runnerCounts(), std::vector<std::size_t>(allInfos.size(), 0));
}

TEST(LibraryTest, ExportsItsFourFunctionsAndNothingElseIsNeeded) {
    const auto library = loadLibrary();
    ASSERT_NE(library, nullptr);
    const auto function = [&](const char* name) { return dlsym(library.get(), name); };
    const auto init = reinterpret_cast<void (*)()>(function("zelCudaInit"));
    const auto available = reinterpret_cast<bool (*)()>(function("zelIsCudaGpuAvailable"));
    const auto makeStream = reinterpret_cast<CUstream_st* (*)()>(function("zelCudaAllocateCudaStream"));
    const auto deleteStream = reinterpret_cast<void (*)(CUstream_st*)>(function("zelCudaDeleteCudaStream"));
    ASSERT_TRUE(init != nullptr && available != nullptr && makeStream != nullptr && deleteStream != nullptr);
    init();
    EXPECT_TRUE(available());
    CUstream_st* const stream = makeStream();
    EXPECT_NE(stream, nullptr);
    deleteStream(stream);
}

TEST(LibraryTest, SaysWhichAlgorithmsThisBuildLacks) {
    const auto library = loadLibrary();
    ASSERT_NE(library, nullptr);
    HostImage input(VoxelTypes::uint8, {4, 4}), output(VoxelTypes::uint8, {4, 4});
    CudaMedianFilter2d filter;
    filter.inputImage = &input;
    filter.outputImage = &output;
    EXPECT_EQ(test::messageOf<RuntimeError>([&] { filter.run(); }),
              "CudaMedianFilter2d has no GPU implementation in this build");

    CudaErosion2d other;
    EXPECT_THROW(CudaMedianFilter2d::getClassInfo()->availableRunner()->run(&other), UnexpectedError);
}
