#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include "DisturbedRun.h"
#include "GaussianFilterRun.h"
#include "Messages.h"

using namespace zel;
using namespace zel::test;

namespace {

using Tile = Vector3<unsigned>;

/// A small run for one placement, through an intermediate image.
struct Disturbed {
    explicit Disturbed(const Placement3d& placement, const ImageSize& size = {20, 11, 7})
        : image(randomImage<std::uint8_t>(size, 8)), run(image, VoxelTypes::uint8, {{1, 0.5, 0.7}, 2}, placement) {}

    HostImage image;
    GaussianFilterRun run;
    DisturbedRun<GaussianFilterRun, std::uint8_t> disturbed{run};
};

std::vector<Placement3d> disturbedPlacements() {
    std::vector<Placement3d> all = allPlacements<Tile>({0, 0, 0});
    for (const Placement3d& placement : allPlacements<Tile>({12, 11, 5})) all.push_back(placement);
    return all;
}

constexpr const char* calls[] = {
    "cudaStreamCreate",      "cudaGetDevice", "cudaGetDeviceProperties", "cudaMalloc",        "cudaMemcpyAsync",
    "cudaStreamSynchronize", "cudaMalloc3D",  "cudaMallocPitch",         "cudaMemcpy3DAsync", "cudaDeviceSynchronize",
    "cudaMemcpy2DAsync"};

}  // namespace

TEST(GaussianFilterCancelled, AtEachPollEndsThereAndLeavesNothing) {
    for (const Placement3d& placement : disturbedPlacements()) {
        Disturbed(placement).disturbed.cancelAtEachStep(!placement.tiled() && !placement.outputOnDevice);
    }
}

TEST(GaussianFilterFaults, EachRefusedCallIsReportedAndLeavesNothing) {
    for (const Placement3d& placement : disturbedPlacements()) Disturbed(placement).disturbed.refuseEachCall(calls);
    Disturbed({}, {20, 11, 1}).disturbed.refuseEachCall(calls);
    Disturbed({true, true, {8, 11, 1}}, {20, 11, 1}).disturbed.refuseEachCall(calls);
}

TEST(GaussianFilterFaults, AFailedPassIsReportedUntilTheDeviceIsReset) {
    for (std::uint64_t pass = 1; pass <= 3; ++pass) {
        Disturbed small({});
        host::injectFault({.call = "cudaLaunchKernelEx", .nth = pass, .kind = host::FaultKind::failed});
        EXPECT_THROW(small.run.filter.run(), RuntimeError);
        EXPECT_THROW(small.run.filter.run(), RuntimeError) << "the error is sticky";
        host::clearFault();
        ASSERT_EQ(cudaDeviceReset(), cudaSuccess);
        small.run.filter.run();
        EXPECT_EQ(small.run.result<std::uint8_t>(), small.disturbed.expected());
    }
}

TEST(GaussianFilterFaults, AFullDeviceIsReportedAndTilesHelp) {
    HostImage image = randomImage<std::uint8_t>({128, 128, 64}, 1);
    GaussianFilterRun run(image, VoxelTypes::uint8, {}, {});
    const host::ScopedDevices small(1, 4 << 20);
    EXPECT_THAT(messageOf<RuntimeError>([&] { run.filter.run(); }), testing::HasSubstr("out of memory"));
    run.filter.tilingMode = 1;
    run.filter.tileSize = {64, 64, 32};
    EXPECT_NO_THROW(run.filter.run());
}

TEST(GaussianFilterModes, BringOutNoFault) {
    HostImage image = randomImage<std::int16_t>({23, 14, 6}, 5);
    const GaussianParameters parameters{{1, 2, 0.5}, 2};
    GaussianFilterRun plain(image, VoxelTypes::int16, parameters, {});
    plain.filter.run();
    const std::vector<std::int16_t> expected = plain.result<std::int16_t>();
    const host::TestModes modes[] = {{.deferredStreams = true},
                                     {.protectedMemory = true},
                                     {.poison = true, .redZones = true},
                                     {.deferredStreams = true, .redZones = true, .blockShuffleSeed = 17}};
    for (const host::TestModes& mode : modes) {
        const host::ScopedTestModes scoped(mode);
        for (const Placement3d& placement : disturbedPlacements()) {
            GaussianFilterRun run(image, VoxelTypes::int16, parameters, placement);
            run.filter.run();
            EXPECT_EQ(run.result<std::int16_t>(), expected);
        }
    }
}

TEST(GaussianFilterRows, ThatCannotBeReadOrWrittenAreNamed) {
    for (const bool failInput : {true, false}) {
        const std::optional<std::size_t> failing(9), none;
        RowsOnlyImage input(randomImage<std::uint8_t>({16, 12, 3}, 1), failInput ? failing : none);
        RowsOnlyImage output(HostImage(VoxelTypes::uint8, {16, 12, 3}), failInput ? none : failing);
        cuda::CudaGaussianFilter3d filter;
        filter.inputImage = &input;
        filter.outputImage = &output;
        const auto before = host::deviceUse().liveAllocations;
        EXPECT_EQ(messageOf<RuntimeError>([&] { filter.run(); }),
                  std::string("Cannot ") + (failInput ? "read" : "write") +
                      " a row at the coordinates (0, 9, 0, 0, 0) in the image (16, 12, 3, 1, 1)");
        EXPECT_EQ(host::deviceUse().liveAllocations, before);
    }
}
