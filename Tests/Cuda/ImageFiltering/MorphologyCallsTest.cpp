#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <memory>
#include <vector>

#include "ImageFiltering/MorphologyPasses_CUDA.h"
#include "MorphologyRun.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// What one call of morphologyPasses, or one run, asks of the device.
struct Calls {
    std::uint64_t squares, masks, fills, memsets, allocations, synchronisations;

    bool operator==(const Calls&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Calls& calls) {
    return out << calls.squares << " squares, " << calls.masks << " masks, " << calls.fills << " fills, "
               << calls.memsets << " memsets, " << calls.allocations << " allocations, " << calls.synchronisations
               << " synchronisations";
}

template <typename Action>
Calls callsOf(const Action& action) {
    host::resetCallCounts();
    action();
    const auto count = [](const char* erosion, const char* dilation) {
        return host::callCount(erosion) + host::callCount(dilation);
    };
    return {count("nppiErode3x3Border_8u_C1R_Ctx", "nppiDilate3x3Border_8u_C1R_Ctx"),
            count("nppiErodeBorder_8u_C1R_Ctx", "nppiDilateBorder_8u_C1R_Ctx"),
            host::callCount("cudaLaunchKernelEx"),
            host::callCount("cudaMemsetAsync"),
            host::callCount("cudaMalloc"),
            host::callCount("cudaDeviceSynchronize")};
}

/// Three planes of 40 x 30 pixels, the first one with a pixel of 200 in the middle of zeros.
class Passes {
public:
    Passes() { EXPECT_EQ(cudaMemsetAsync(memory_.get(), 0, 3 * plane, nullptr), cudaSuccess); }

    enum class WorkArea { none, own, source };

    Calls dilate(int passes, bool square, WorkArea workArea) {
        const unsigned char bright = 200;
        EXPECT_EQ(cudaMemsetAsync(src(), 0, plane, nullptr), cudaSuccess);
        EXPECT_EQ(cudaMemcpy(src() + 15 * width + 20, &bright, 1, cudaMemcpyHostToDevice), cudaSuccess);
        unsigned char* const works[] = {nullptr, src() + plane, src()};
        const Calls calls = callsOf([&] {
            morphologyPasses<std::uint8_t>(src(), width, works[static_cast<int>(workArea)], width, dst(), width,
                                           {width, height}, passes, square, *context_, true);
        });
        EXPECT_EQ(brightPixels(), square ? (2 * passes + 1) * (2 * passes + 1) : 2 * passes * (passes + 1) + 1);
        return calls;
    }

private:
    static constexpr int width = 40, height = 30;
    static constexpr std::size_t plane = width * height;

    unsigned char* src() { return static_cast<unsigned char*>(memory_.get()); }
    unsigned char* dst() { return src() + 2 * plane; }

    long brightPixels() {
        std::vector<unsigned char> pixels(plane);
        EXPECT_EQ(cudaMemcpy(pixels.data(), dst(), plane, cudaMemcpyDeviceToHost), cudaSuccess);
        return std::count(pixels.begin(), pixels.end(), 200);
    }

    std::shared_ptr<void> memory_ = allocateDeviceMemory(3 * plane);
    decltype(makeNppStreamContext(nullptr)) context_ = makeNppStreamContext(nullptr);
};

template <typename Algo>
Calls callsOfRun(unsigned radius, bool square) {
    HostImage image = randomImage<std::uint8_t>({40, 30}, 1);
    MorphologyRun<Algo> run(image, radius, square, {true, true});
    Calls calls = callsOf([&] { run.filter.run(); });
    calls.synchronisations -= 2;  // the driver's, before and after the functor
    return calls;
}

}  // namespace

TEST(MorphologyPassesTest, TakeThePathThatTheWorkAreaAllows) {
    Passes passes;
    using enum Passes::WorkArea;
    // Repeated squares, which need no mask. The first two of an even number are queued together.
    EXPECT_EQ(passes.dilate(1, true, none), (Calls{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(passes.dilate(3, true, own), (Calls{3, 0, 0, 0, 0, 3}));
    EXPECT_EQ(passes.dilate(4, true, own), (Calls{4, 0, 0, 0, 0, 3}));
    EXPECT_EQ(passes.dilate(3, true, source), (Calls{3, 0, 0, 0, 0, 3}));
    // Repeated masks of radius 1, one fill for all of them.
    EXPECT_EQ(passes.dilate(3, false, own), (Calls{0, 3, 1, 0, 1, 3}));
    EXPECT_EQ(passes.dilate(4, false, own), (Calls{0, 4, 1, 0, 1, 4}));
    EXPECT_EQ(passes.dilate(5, false, source), (Calls{0, 5, 1, 0, 1, 5}));
    // One large mask.
    EXPECT_EQ(passes.dilate(3, true, none), (Calls{0, 1, 0, 1, 1, 1}));
    EXPECT_EQ(passes.dilate(2, true, source), (Calls{0, 1, 0, 1, 1, 1}));
    EXPECT_EQ(passes.dilate(1, false, none), (Calls{0, 1, 1, 0, 1, 1}));
    EXPECT_EQ(passes.dilate(4, false, source), (Calls{0, 1, 1, 0, 1, 1}));
}

// An application's pending error is none of the mask's launch; a refusal of that launch is.
TEST(MorphologyPassesTest, ReportTheMasksLaunchAndNoErrorFromBefore) {
    Passes passes;
    EXPECT_NE(cudaSetDevice(-1), cudaSuccess);
    EXPECT_NO_THROW(passes.dilate(2, false, Passes::WorkArea::own));
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorInvalidDevice) << "it is the application's to fetch";
    host::injectFault({.call = "cudaLaunchKernelEx", .status = cudaErrorLaunchOutOfResources});
    EXPECT_THROW(passes.dilate(2, false, Passes::WorkArea::own), RuntimeError);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

TEST(MorphologyPassesTest, OfARunNeedNoLargeMask) {
    EXPECT_EQ(callsOfRun<CudaErosion2d>(1, true), (Calls{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(callsOfRun<CudaErosion2d>(1, false), (Calls{0, 1, 1, 0, 1, 1}));
    EXPECT_EQ(callsOfRun<CudaDilation2d>(6, true), (Calls{6, 0, 0, 0, 0, 5}));
    EXPECT_EQ(callsOfRun<CudaOpening2d>(3, true), (Calls{6, 0, 0, 0, 0, 6}));
    EXPECT_EQ(callsOfRun<CudaClosing2d>(2, true), (Calls{4, 0, 0, 0, 0, 3}));
    // Three calls of morphologyPasses, the second one of a single pass without a work area.
    EXPECT_EQ(callsOfRun<CudaClosing2d>(4, false), (Calls{0, 8, 3, 0, 3, 8}));
}
