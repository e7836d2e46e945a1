#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <algorithm>
#include <random>

#include "GaussianFilterRun.h"
#include "Messages.h"
#include "PlainGaussian.h"
#include "RunChecks.h"
#include "zel/AlgoInfo.h"
#include "zel/Exceptions.h"

using namespace zel;
using namespace zel::test;

namespace {

using Tile = Vector3<unsigned>;

template <typename T, typename U>
struct InOut {
    using In = T;
    using Out = U;
};

using Instances = ::testing::Types<InOut<std::uint8_t, std::uint8_t>, InOut<std::uint16_t, std::uint16_t>,
                                   InOut<std::uint32_t, std::uint32_t>, InOut<std::int8_t, std::int8_t>,
                                   InOut<std::int16_t, std::int16_t>, InOut<std::int32_t, std::int32_t>,
                                   InOut<std::uint8_t, float>, InOut<std::uint16_t, float>, InOut<std::uint32_t, float>,
                                   InOut<std::int8_t, float>, InOut<std::int16_t, float>, InOut<std::int32_t, float>,
                                   InOut<float, float>, InOut<double, float>, InOut<double, double>>;

template <typename T>
class GaussianFilter : public ::testing::Test {};

/// Volumes of a few voxels along each axis, also flat ones and such that are smaller than the kernel.
struct RandomCase {
    explicit RandomCase(unsigned seed) : random(seed) {
        size = {1 + random() % 24, 1 + random() % 12, random() % 3 == 0 ? 1 : 1 + random() % 9};
        parameters.sigma = {sigma(), sigma(), sigma()};
        parameters.kernelSizeFactor = 0.5 + static_cast<double>(random() % 5) / 2;
    }

    double sigma() { return random() % 4 == 0 ? 0 : 0.2 + static_cast<double>(random() % 20) / 10; }

    std::mt19937 random;
    ImageSize size{};
    GaussianParameters parameters;
};

}  // namespace

TYPED_TEST_SUITE(GaussianFilter, Instances);

TYPED_TEST(GaussianFilter, GivesThePlainResultWhereverTheImagesLieAndHoweverTheyAreCut) {
    using In = typename TypeParam::In;
    using Out = typename TypeParam::Out;
    for (unsigned seed = 0; seed < 8; ++seed) {
        RandomCase test(seed);
        test.parameters.voxelTypeIntermediate = seed % 2 == 1;
        HostImage image = randomImage<In>(test.size, seed);
        const std::vector<Out> expected = plainGaussian<In, Out>(image, test.parameters);
        std::vector<Tile> tiles{{0, 0, 0}, {9, 7, 5}, {100, 8, 3}, {5, 100, 6}};
        if (expected.size() < 300) tiles.push_back({1, 1, 1});  // a tile for each voxel
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        expectEverywhere(expected, tiles, [&](const Placement3d& placement) {
            return GaussianFilterRun(image, voxelTypeOf<Out>, test.parameters, placement);
        });
    }
}

TEST(GaussianFilterMemory, HoldsBuffersKernelsAndTheScratchOfOnePass) {
    constexpr std::uint64_t width = 64, height = 40, depth = 20, taps = 5, blocks = 132;
    HostImage image = randomImage<std::uint16_t>({width, height, depth}, 2);
    const auto peak = [&](const Placement3d& placement, bool direct) {
        return peakBytesOf(GaussianFilterRun(image, VoxelTypes::uint16, {{1, 1, 1}, 2, direct}, placement));
    };
    // Each block has a line, mirrored at both ends, and as many offsets of 8 bytes.
    const auto scratch = [&](std::uint64_t lines, std::uint64_t length, std::uint64_t voxelBytes) {
        return std::min(lines, blocks) * (length + taps - 1) * (voxelBytes + 8);
    };
    const auto largestScratch = [&](std::uint64_t workBytes) {
        return std::max(
            {scratch(height, width, 2), scratch(width, height, workBytes), scratch(width, depth, workBytes)});
    };
    constexpr std::uint64_t kernels = 3 * taps * 4, volume = width * height * depth;
    EXPECT_EQ(peak({true, true}, true), kernels + largestScratch(2));
    EXPECT_EQ(peak({true, true}, false), kernels + largestScratch(4) + 4 * volume);
    EXPECT_EQ(peak({false, true}, true), kernels + largestScratch(2) + 2 * volume);
    EXPECT_EQ(peak({false, false}, false), kernels + largestScratch(4) + (2 + 2 + 4) * volume);
    EXPECT_LE(peak({false, false, {32, 20, 10}}, false), kernels + largestScratch(4) + (2 + 2 + 4) * volume / 8);
}

TEST(GaussianFilterCalls, SynchroniseAtEachStepAndReuseBuffers) {
    HostImage image = randomImage<std::uint8_t>({40, 30, 20}, 2);
    const auto counts = [&](const Placement3d& placement) {
        GaussianFilterRun run(image, VoxelTypes::uint8, {{0, 0, 0}, 1}, placement);
        host::resetCallCounts();
        run.filter.run();
        return std::pair(host::callCount("cudaDeviceSynchronize"), host::callCount("cudaMalloc3D"));
    };
    using Counts = std::pair<std::uint64_t, std::uint64_t>;
    // One before the passes, and one for each of the steps.
    EXPECT_EQ(counts({false, false}), Counts(1 + 5, 3));
    EXPECT_EQ(counts({true, true}), Counts(1 + 3, 1));
    // Tiles of 16, 16 and 8 by 16 and 14 by 16 and 4. Each slice of a tile travels alone, as it has gaps in the image.
    // Only the output's buffer is made anew, at each change of height or depth.
    EXPECT_EQ(counts({false, false, {16, 16, 16}}), Counts(12 * 3 + 2 * 6 * (16 + 4), 1 + 1 + 4));
}

TEST(GaussianFilterStream, OfTheCallerNeedsItsDevice) {
    HostImage image = randomImage<std::uint16_t>({16, 16, 4}, 3);
    GaussianFilterRun run(image, VoxelTypes::uint16, {}, {});
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    CudaContext context{7, stream};
    run.filter.cudaContext = &context;
    EXPECT_THROW(run.filter.run(), RuntimeError) << "beside a stream the id is not checked but used";
    context.deviceId = -1;
    EXPECT_THROW(run.filter.run(), RuntimeError) << "and stands for no other one";
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    context.stream = nullptr;
    EXPECT_NO_THROW(run.filter.run());
}

TEST(GaussianFilterTypes, WithoutAnInstanceAreNamedByTheirCode) {
    HostImage image(VoxelTypes::int64, {4, 4, 4});
    GaussianFilterRun run(image, VoxelTypes::float32, {}, {});
    Runnable* const runner = cuda::CudaGaussianFilter3d::getClassInfo()->availableRunner();
    EXPECT_EQ(messageOf<RuntimeError>([&] { runner->run(&run.filter); }), "Unsupported input data type 7");
}
