#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include "BoxFilterRun.h"
#include "Messages.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::test;

namespace {

const Vector2<unsigned> tile{24, 20};

/// A run that can be disturbed, and that has to be right afterwards.
struct DisturbedRun {
    explicit DisturbedRun(const Placement& placement) : run(image, 5, 3, placement) {
        run.filter.run();
        expected = run.result<std::uint8_t>();
        before = host::deviceUse();
    }

    void expectUnharmed() {
        host::DeviceUse after = host::deviceUse();
        after.peakBytes = before.peakBytes;
        EXPECT_EQ(after, before) << "something was left on the device";
        EXPECT_EQ(cudaPeekAtLastError(), cudaSuccess);
        run.filter.run();
        EXPECT_EQ(run.result<std::uint8_t>(), expected);
    }

    HostImage image = randomImage<std::uint8_t>({60, 50}, 8);
    BoxFilterRun run;
    std::vector<std::uint8_t> expected;
    host::DeviceUse before;
};

std::vector<Placement> disturbedPlacements() {
    std::vector<Placement> all = allPlacements({0, 0});
    for (const Placement& placement : allPlacements(tile)) all.push_back(placement);
    return all;
}

}  // namespace

TEST(BoxFilterCancelled, AtEachPollEndsThereAndLeavesNothing) {
    for (const Placement& placement : disturbedPlacements()) {
        DisturbedRun disturbed(placement);
        auto& filter = disturbed.run.filter;
        StepWatch watch;
        filter.run(&watch);
        const bool tiled = placement.tile.x > 0;
        for (std::uint64_t done = 0; done < watch.total(); ++done) {
            SCOPED_TRACE(testing::Message() << "after " << done << " of " << watch.total() << " steps");
            StepWatch canceller(&filter, done);
            // In one block nothing is polled after the download: the result is complete.
            const bool lastDownload = !tiled && !placement.outputOnDevice && done + 1 == watch.total();
            if (lastDownload) {
                EXPECT_NO_THROW(filter.run(&canceller));
            } else {
                EXPECT_THROW(filter.run(&canceller), ExceptionCancelation);
                EXPECT_EQ(canceller.steps(), done) << "a step that was cancelled does not count";
            }
        }
        disturbed.expectUnharmed();
    }
}

TEST(BoxFilterFaults, EachRefusedCallIsReportedAndLeavesNothing) {
    const char* const calls[] = {"cudaStreamCreate",      "cudaStreamGetFlags",
                                 "cudaGetDevice",         "cudaGetDeviceProperties",
                                 "cudaGetDeviceCount",    "cudaDeviceGetAttribute",
                                 "cudaMallocPitch",       "cudaMemcpy2DAsync",
                                 "cudaDeviceSynchronize", "nppiFilterBoxBorder_8u_C1R_Ctx"};
    for (const Placement& placement : disturbedPlacements()) {
        DisturbedRun disturbed(placement);
        for (const char* call : calls) {
            host::resetCallCounts();
            disturbed.run.filter.run();
            const std::uint64_t count = host::callCount(call);
            for (std::uint64_t nth = 1; nth <= count; ++nth) {
                SCOPED_TRACE(testing::Message() << call << ", call " << nth);
                host::injectFault({.call = call, .nth = nth});
                EXPECT_THROW(disturbed.run.filter.run(), RuntimeError);
                EXPECT_TRUE(host::faultFired());
            }
        }
        host::clearFault();
        disturbed.expectUnharmed();
    }
}

TEST(BoxFilterFaults, AFailedDeviceIsReportedUntilItIsReset) {
    DisturbedRun disturbed({});
    host::injectFault({.call = "nppiFilterBoxBorder_8u_C1R_Ctx", .nth = 1, .kind = host::FaultKind::failed});
    EXPECT_THROW(disturbed.run.filter.run(), RuntimeError);
    EXPECT_THROW(disturbed.run.filter.run(), RuntimeError) << "the error is sticky";
    host::clearFault();
    ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    disturbed.run.filter.run();
    EXPECT_EQ(disturbed.run.result<std::uint8_t>(), disturbed.expected);
}

TEST(BoxFilterFaults, AFullDeviceIsReportedInTheRuntimesWords) {
    HostImage image = randomImage<std::uint8_t>({4096, 4096}, 1);
    BoxFilterRun run(image, 3, 3, {});
    const host::ScopedDevices small(1, 20 << 20);
    const std::uint64_t liveBefore = host::deviceUse().liveBytes;
    EXPECT_THAT(messageOf<RuntimeError>([&] { run.filter.run(); }), testing::HasSubstr("out of memory"));
    EXPECT_EQ(host::deviceUse().liveBytes, liveBefore);
    run.filter.tilingMode = 1;
    run.filter.tileSize = {1024, 1024};
    EXPECT_NO_THROW(run.filter.run()) << "tiles fit";
}

TEST(BoxFilterFaults, WithoutADeviceThereIsNoRunner) {
    HostImage image = randomImage<std::uint8_t>({8, 8}, 1);
    BoxFilterRun run(image, 3, 3, {});
    {
        const host::ScopedDevices none(0, 0);
        EXPECT_EQ(messageOf<RuntimeError>([&] { run.filter.run(); }), "No runner is available for CudaBoxFilter2d");
    }
    EXPECT_NO_THROW(run.filter.run());
}

TEST(BoxFilterModes, BringOutNoFault) {
    HostImage image = randomImage<std::int16_t>({83, 61}, 5);
    BoxFilterRun plain(image, 9, 4, {});
    plain.filter.run();
    const std::vector<std::int16_t> expected = plain.result<std::int16_t>();
    const host::TestModes modes[] = {{.deferredStreams = true},
                                     {.protectedMemory = true},
                                     {.poison = true, .redZones = true},
                                     {.deferredStreams = true, .redZones = true, .blockShuffleSeed = 17}};
    for (const host::TestModes& mode : modes) {
        const host::ScopedTestModes scoped(mode);
        for (const Placement& placement : disturbedPlacements()) {
            BoxFilterRun run(image, 9, 4, placement);
            run.filter.run();
            EXPECT_EQ(run.result<std::int16_t>(), expected);
        }
    }
}

TEST(BoxFilterRows, ThatCannotBeReadOrWrittenAreNamed) {
    for (const bool failInput : {true, false}) {
        RowsOnlyImage input(randomImage<std::uint8_t>({16, 12}, 1),
                            failInput ? std::optional<std::size_t>(9) : std::nullopt);
        RowsOnlyImage output(HostImage(VoxelTypes::uint8, {16, 12}),
                             failInput ? std::nullopt : std::optional<std::size_t>(9));
        cuda::CudaBoxFilter2d filter;
        filter.inputImage = &input;
        filter.outputImage = &output;
        const auto before = host::deviceUse().liveAllocations;
        EXPECT_EQ(messageOf<RuntimeError>([&] { filter.run(); }),
                  std::string("Cannot ") + (failInput ? "read" : "write") +
                      " a row at the coordinates (0, 9, 0, 0, 0) in the image (16, 12, 1, 1, 1)");
        EXPECT_EQ(host::deviceUse().liveAllocations, before);
    }
}
