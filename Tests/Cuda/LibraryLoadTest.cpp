#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>

#include "Messages.h"
#include "zel/HostImage.h"
#include "zel/algorithms.h"

using namespace zel;
using namespace zel::cuda;

namespace {

template <typename... Algos>
std::vector<AlgoInfo*> infosOf() {
    return {Algos::getClassInfo()...};
}

const auto allInfos =
    infosOf<CudaAdaptiveManifoldNlmFilter, CudaCrossCorrelation2d, CudaTemplateMatching3d, CudaBoxFilter2d,
            CudaGaussianFilter3d, CudaMedianFilter2d, CudaClosing2d, CudaDilation2d, CudaErosion2d, CudaOpening2d>();

std::vector<std::size_t> runnerCounts() {
    std::vector<std::size_t> counts;
    for (const AlgoInfo* info : allInfos) counts.push_back(info->runnerCount());
    return counts;
}

struct CloseLibrary {
    void operator()(void* handle) const { dlclose(handle); }
};

std::unique_ptr<void, CloseLibrary> loadLibrary() {
    return std::unique_ptr<void, CloseLibrary>(dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_LOCAL));
}

}  // namespace

TEST(Library, RegistersTenRunnersAtLoadAndTakesThemBackAtUnload) {
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_EQ(runnerCounts(), std::vector<std::size_t>(10, 0));
        {
            const auto library = loadLibrary();
            ASSERT_NE(library, nullptr) << dlerror();
            EXPECT_EQ(runnerCounts(), std::vector<std::size_t>(10, 1));
            for (const AlgoInfo* info : allInfos) {
                Runnable* const runner = info->availableRunner();
                ASSERT_NE(runner, nullptr) << info->className();
                EXPECT_EQ(runner->runnerKind(), 3);
            }
        }
        EXPECT_EQ(dlopen(ZEL_CUDA_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something keeps the library in memory";
    }
    EXPECT_EQ(runnerCounts(), std::vector<std::size_t>(10, 0));
}

TEST(Library, ExportsItsFourFunctionsAndNothingElseIsNeeded) {
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

TEST(Library, SaysWhichAlgorithmsThisBuildLacks) {
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
