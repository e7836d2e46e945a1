#include <cuda_runtime.h>
#include <host_device.h>

#include "ImageFiltering/MorphologyPasses_CUDA.h"
#include "MorphologyRun.h"
#include "Utilities_CUDA/DeviceMemory_CUDA.h"
#include "Utilities_CUDA/DeviceResidentImage_CUDA.h"
#include "Utilities_CUDA/Gpu_CUDA.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::cuda;
using namespace zel::test;

namespace {

/// What is asked of the device: passes by a square, passes by a mask, launches (each fills a diamond), memsets (each
/// fills a square), allocations, synchronisations.
using Calls = std::array<std::uint64_t, 6>;

template <typename Action>
Calls callsOf(const Action& action) {
    host::resetCallCounts();
    action();
    using host::callCount;
    return {callCount("nppiErode3x3Border_8u_C1R_Ctx") + callCount("nppiDilate3x3Border_8u_C1R_Ctx"),
            callCount("nppiErodeBorder_8u_C1R_Ctx") + callCount("nppiDilateBorder_8u_C1R_Ctx"),
            callCount("cudaLaunchKernelEx"),
            callCount("cudaMemsetAsync"),
            callCount("cudaMalloc"),
            callCount("cudaDeviceSynchronize")};
}

enum class WorkArea { none, own, source };

/// Calls of a dilation of 40 x 30 pixels, of which the one in the middle is bright.
Calls callsOfDilation(int passes, bool square, WorkArea workArea) {
    constexpr std::size_t width = 40, height = 30, plane = width * height;
    const auto memory = allocateDeviceMemory(3 * plane);
    auto* const src = static_cast<unsigned char*>(memory.get());
    unsigned char* const works[] = {nullptr, src + plane, src};
    unsigned char* const dst = src + 2 * plane;
    std::vector<unsigned char> pixels(plane);
    pixels[15 * width + 20] = 200;
    EXPECT_EQ(cudaMemcpy(src, pixels.data(), plane, cudaMemcpyHostToDevice), cudaSuccess);
    const auto context = makeNppStreamContext(nullptr);
    const Calls calls = callsOf([&] {
        morphologyPasses<std::uint8_t>(src, width, works[static_cast<int>(workArea)], width, dst, width,
                                       {width, height}, passes, square, *context, true);
    });
    EXPECT_EQ(cudaMemcpy(pixels.data(), dst, plane, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 200),
              square ? (2 * passes + 1) * (2 * passes + 1) : 2 * passes * (passes + 1) + 1);
    return calls;
}

template <typename Algo>
Calls callsOfRun(unsigned radius, bool square) {
    HostImage image = randomImage<std::uint8_t>({40, 30}, 1);
    MorphologyRun<Algo> run(image, radius, square, {true, true});
    return callsOf([&] { run.filter.run(); });
}

}  // namespace

TEST(MorphologyPassesTest, TakeThePathThatTheWorkAreaAllows) {
    using enum WorkArea;
    // Repeated squares, which need no mask. The first two of an even number are queued together.
    EXPECT_EQ(callsOfDilation(1, true, none), (Calls{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(callsOfDilation(3, true, own), (Calls{3, 0, 0, 0, 0, 3}));
    EXPECT_EQ(callsOfDilation(4, true, own), (Calls{4, 0, 0, 0, 0, 3}));
    EXPECT_EQ(callsOfDilation(3, true, source), (Calls{3, 0, 0, 0, 0, 3}));
    // Repeated masks of radius 1, one fill for all of them.
    EXPECT_EQ(callsOfDilation(3, false, own), (Calls{0, 3, 1, 0, 1, 3}));
    EXPECT_EQ(callsOfDilation(4, false, own), (Calls{0, 4, 1, 0, 1, 4}));
    EXPECT_EQ(callsOfDilation(5, false, source), (Calls{0, 5, 1, 0, 1, 5}));
    // One large mask.
    EXPECT_EQ(callsOfDilation(3, true, none), (Calls{0, 1, 0, 1, 1, 1}));
    EXPECT_EQ(callsOfDilation(2, true, source), (Calls{0, 1, 0, 1, 1, 1}));
    EXPECT_EQ(callsOfDilation(1, false, none), (Calls{0, 1, 1, 0, 1, 1}));
    EXPECT_EQ(callsOfDilation(4, false, source), (Calls{0, 1, 1, 0, 1, 1}));
}

// An application's pending error is none of the mask's launch; a refusal of that launch is.
TEST(MorphologyPassesTest, ReportTheMasksLaunchAndNoErrorFromBefore) {
    EXPECT_NE(cudaSetDevice(-1), cudaSuccess);
    EXPECT_NO_THROW(callsOfDilation(2, false, WorkArea::own));
    EXPECT_EQ(cudaPeekAtLastError(), cudaErrorInvalidDevice) << "it is the application's to fetch";
    host::injectFault({.call = "cudaLaunchKernelEx", .status = cudaErrorLaunchOutOfResources});
    EXPECT_THROW(callsOfDilation(2, false, WorkArea::own), RuntimeError);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

// Synchronisations are those of the passes and two of the driver.
TEST(MorphologyPassesTest, OfARunNeedNoLargeMask) {
    EXPECT_EQ(callsOfRun<CudaErosion2d>(1, true), (Calls{1, 0, 0, 0, 0, 1 + 2}));
    EXPECT_EQ(callsOfRun<CudaErosion2d>(1, false), (Calls{0, 1, 1, 0, 1, 1 + 2}));
    EXPECT_EQ(callsOfRun<CudaDilation2d>(6, true), (Calls{6, 0, 0, 0, 0, 5 + 2}));
    EXPECT_EQ(callsOfRun<CudaOpening2d>(3, true), (Calls{6, 0, 0, 0, 0, 6 + 2}));
    EXPECT_EQ(callsOfRun<CudaClosing2d>(2, true), (Calls{4, 0, 0, 0, 0, 3 + 2}));
    // Three calls of morphologyPasses, the second one of a single pass without a work area.
    EXPECT_EQ(callsOfRun<CudaClosing2d>(4, false), (Calls{0, 8, 3, 0, 3, 8 + 2}));
}

// Passes are held back on the host device, but not beyond a run or an error: a look by pointer finds all done.
TEST(MorphologyPassesTest, LeaveNothingHeldBehindARun) {
    HostImage image = randomImage<std::uint8_t>({40, 30}, 1);
    for (const unsigned radius : {1U, 2U, 5U}) {
        for (const bool square : {false, true}) {
            MorphologyRun<CudaOpening2d> run(image, radius, square, {true, true});
            std::size_t pitch = 0;
            const auto* const output =
                static_cast<const unsigned char*>(deviceDataPointer(run.deviceOutput.get(), pitch));
            const std::size_t bytes = 29 * pitch + 40;
            bool refused = true;
            for (std::uint64_t nth = 1; refused; ++nth) {
                SCOPED_TRACE(::testing::Message() << "radius " << radius << ", call " << nth << " refused");
                host::injectFault({.call = "", .nth = nth});
                try {
                    run.filter.run();
                } catch (const RuntimeError&) {
                }
                refused = host::faultFired();
                host::clearFault();
                const std::vector<unsigned char> seen(output, output + bytes);
                std::vector<unsigned char> copied(bytes);
                ASSERT_EQ(cudaMemcpy(copied.data(), output, bytes, cudaMemcpyDeviceToHost), cudaSuccess);
                ASSERT_EQ(seen, copied);
            }
            cudaGetLastError();
        }
    }
}
