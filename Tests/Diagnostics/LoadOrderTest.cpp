#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "DebugEnvironment.h"
#include "zel/AlgoInfo.h"
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

using namespace zel;

namespace {

std::size_t firstAlgorithmsRunners() {
    return cuda::CudaAdaptiveManifoldNlmFilter::getClassInfo()->runnerCount();
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
        watched->runnersSeen_ = watched->runnersSeen_ || firstAlgorithmsRunners() > 0;
        return static_cast<ssize_t>(length);
    }

    std::FILE* original_;
    std::string text_;
    bool runnersSeen_ = false;
};

}  // namespace

TEST(LoadOrder, SetsTheDebugFacilityUpAtEachLoadBeforeAnyRunnerIsThere) {
    const test::DebugEnvironment environment{{"KESTA_DEBUG", "1"},
                                             {"KESTA_DEBUG_LEVEL", "-1"},
                                             {"KESTA_DEBUG_FUNC_FILTER", "f g"},
                                             {"KESTA_DEBUG_PACKAGE_FILTER", "p"}};
    for (int load = 0; load < 2; ++load) {
        const WatchedStandardError watched;
        void* const library = dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_EQ(firstAlgorithmsRunners(), 1U);
        EXPECT_FALSE(watched.runnersSeen());
        EXPECT_EQ(watched.text(),
                  "Found KESTA_DEBUG -> Enabling debugging output\n"
                  "   level set to KESTA_DEBUG_LEVEL = NONE\n"
                  "   set funcfilter from KESTA_DEBUG_FUNC_FILTER = (f, g, )\n"
                  "   set packagefilter from KESTA_DEBUG_PACKAGE_FILTER = (p, )\n");
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something keeps the library in memory";
    }
}
