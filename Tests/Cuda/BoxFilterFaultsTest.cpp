#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include "BoxFilterRun.h"
#include "DisturbedRun.h"
#include "Messages.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::test;

namespace {

const Vector2<unsigned> tile{24, 20};

/// A small run for one placement.
struct Disturbed {
    explicit Disturbed(const Placement& placement) : run(image, 5, 3, placement) {}

    HostImage image = randomImage<std::uint8_t>({60, 50}, 8);
    BoxFilterRun run;
    DisturbedRun<BoxFilterRun, std::uint8_t> disturbed{run};
};

std::vector<Placement> disturbedPlacements() {
    std::vector<Placement> all = allPlacements({0, 0});
    for (const Placement& placement : allPlacements(tile)) all.push_back(placement);
    return all;
}

}  // namespace

TEST(BoxFilterCancelled, AtEachPollEndsThereAndLeavesNothing) {
    for (const Placement& placement : disturbedPlacements()) {
        Disturbed(placement).disturbed.cancelAtEachStep(!placement.tiled() && !placement.outputOnDevice);
    }
}

TEST(BoxFilterFaults, EachRefusedCallIsReportedAndLeavesNothing) {
    const char* const calls[] = {"cudaStreamCreate",      "cudaStreamGetFlags",
                                 "cudaGetDevice",         "cudaGetDeviceProperties",
                                 "cudaGetDeviceCount",    "cudaDeviceGetAttribute",
                                 "cudaMallocPitch",       "cudaMemcpy2DAsync",
                                 "cudaDeviceSynchronize", "nppiFilterBoxBorder_8u_C1R_Ctx"};
    for (const Placement& placement : disturbedPlacements()) Disturbed(placement).disturbed.refuseEachCall(calls);
}

TEST(BoxFilterFaults, AFailedDeviceIsReportedUntilItIsReset) {
    Disturbed small({});
    host::injectFault({.call = "nppiFilterBoxBorder_8u_C1R_Ctx", .nth = 1, .kind = host::FaultKind::failed});
    EXPECT_THROW(small.run.filter.run(), RuntimeError);
    EXPECT_THROW(small.run.filter.run(), RuntimeError) << "the error is sticky";
    host::clearFault();
    ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
    small.run.filter.run();
    EXPECT_EQ(small.run.result<std::uint8_t>(), small.disturbed.expected());
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
