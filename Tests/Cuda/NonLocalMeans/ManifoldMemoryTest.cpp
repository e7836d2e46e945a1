// The dry run of the filter's allocations beside the allocations themselves.

#include <cuda_runtime.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <map>
#include <string>
#include <vector>

#include "AmnlmData.h"
#include "NonLocalMeans/BlockSearch_CUDA.h"
#include "NonLocalMeans/CudaAmnlmFilter.h"

namespace zel::test {
namespace {

/// How many bytes are held each time before some are given back: the same for two neighbouring allocations in either
/// order.
class HeldBytes {
public:
    void hold(std::uint64_t bytes, const char* name) {
        total_ += bytes;
        name_ = name;
        isRising_ = true;
    }
    void release(std::uint64_t bytes) {
        if (isRising_) maxima.emplace_back(total_, name_);
        isRising_ = false;
        total_ -= bytes;
    }
    void touch(std::uint64_t bytes, const char* name) {
        hold(bytes, name);
        release(bytes);
    }

    std::vector<std::pair<std::uint64_t, std::string>> maxima;

private:
    std::uint64_t total_ = 0;
    bool isRising_ = false;
    const char* name_ = "";
};

HeldBytes* watched = nullptr;
std::map<void*, std::uint64_t> sizes;

template <typename Function>
Function* original(const char* mangledName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangledName));
}

}  // namespace
}  // namespace zel::test

// The filter's modules are part of this program, so that their calls come here.
cudaError_t cudaMalloc(void** address, std::size_t bytes) {
    using namespace zel::test;
    const cudaError_t status = original<cudaError_t(void**, std::size_t)>("_Z10cudaMallocPPvm")(address, bytes);
    sizes[*address] = bytes;
    if (watched != nullptr) watched->hold(bytes, "");
    return status;
}

cudaError_t cudaFree(void* address) {
    using namespace zel::test;
    if (watched != nullptr) watched->release(sizes[address]);
    return original<cudaError_t(void*)>("_Z8cudaFreePv")(address);
}

namespace zel::test {
namespace {

TEST(ManifoldMemoryTest, DryRunHoldsWhatTheFilterHolds) {
    const struct {
        amnlm::Extents3 extents;
        float rangeSigma, spatialSigma;
    } cases[] = {{{32, 24, 1}, 0.2f, 4}, {{33, 21, 1}, 0.1f, 32}, {{12, 10, 9}, 0.3f, 9},
                 {{5, 3, 7}, 1, 64},     {{40, 30, 2}, 0.01f, 3}, {{16, 16, 16}, 0.05f, 20}};
    for (const auto& [extents, rangeSigma, spatialSigma] : cases) {
        SCOPED_TRACE(testing::Message() << testing::PrintToString(extents) << ", sigmas " << rangeSigma << " and "
                                        << spatialSigma);
        HeldBytes expected, actual;
        amnlm::ManifoldMemory(expected, extents, rangeSigma, spatialSigma).run();
        expected.release(0);

        host::resetPeakBytes();
        const auto& [x, y, z] = extents;
        watched = &actual;
        {
            AmnlmData block({z, y, x, 1}, uniformValues({z, y, x, 1}, 0, 1, 1));
            AmnlmData patches({z, y, x, 4}, uniformValues({z, y, x, 4}, -1, 1, 2)), result({z, y, x, 1});
            amnlm::adaptiveManifoldFilter(result, block, patches, rangeSigma, spatialSigma, 1);
        }
        watched = nullptr;
        EXPECT_EQ(amnlm::estimatePeakDeviceMemory(extents, rangeSigma, spatialSigma), host::deviceUse().peakBytes);
        for (std::size_t i = 0; i < expected.maxima.size(); ++i) {
            ASSERT_LT(i, actual.maxima.size());
            ASSERT_EQ(expected.maxima[i].first, actual.maxima[i].first)
                << "first differs at \"" << expected.maxima[i].second << "\", number " << i;
        }
    }
}

}  // namespace
}  // namespace zel::test
