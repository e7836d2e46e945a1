#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <host_device.h>

#include <algorithm>
#include <random>

#include "GaussianFilterRun.h"
#include "Messages.h"
#include "PlainGaussian.h"
#include "zel/AlgoInfo.h"
#include "zel/ImageModelSizeProxy.h"

using namespace zel;
using namespace zel::test;

namespace {

using Tile = Vector3<unsigned>;

std::vector<Placement3d> placements(const Tile& tile) {
    return allPlacements<Tile>(tile);
}

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
        for (const Tile tile : {Tile{0, 0, 0}, {9, 7, 5}, {100, 8, 3}, {5, 100, 6}, {1, 1, 1}}) {
            if (tile.x == 1 && test.size.x * test.size.y * test.size.z > 300) continue;  // a tile for each voxel
            for (const Placement3d& placement : placements(tile)) {
                SCOPED_TRACE(testing::Message()
                             << "seed " << seed << ", tile " << tile.x << " x " << tile.y << " x " << tile.z
                             << ", device " << placement.inputOnDevice << placement.outputOnDevice);
                GaussianFilterRun run(image, voxelTypeOf<Out>(), test.parameters, placement);
                run.filter.run();
                ASSERT_EQ(run.template result<Out>(), expected);
            }
        }
    }
}

// The reach of a single voxel shows the size of the kernel.
TEST(GaussianFilterKernel, HasAnOddSizeByItsFactor) {
    constexpr std::size_t length = 31;
    HostImage image(VoxelTypes::float32, {length, length, length});
    voxels<float>(image)[(length * length + length + 1) * (length / 2)] = 1;
    const auto reach = [&](const GaussianParameters& parameters) {
        GaussianFilterRun run(image, VoxelTypes::float32, parameters, {});
        run.filter.run();
        const auto result = run.result<float>();
        std::array<long, 3> counts{};
        for (std::size_t axis = 0, stride = 1; axis < 3; ++axis, stride *= length) {
            const std::size_t first = (length * length + length + 1 - stride) * (length / 2);
            for (std::size_t i = 0; i < length; ++i) counts[axis] += result[first + i * stride] > 0 ? 1 : 0;
        }
        return counts;
    };
    using Counts = std::array<long, 3>;
    EXPECT_EQ(reach({{1, 1, 1}, 2}), (Counts{5, 5, 5}));
    EXPECT_EQ(reach({{1, 2, 0}, 1.5}), (Counts{3, 7, 1}));
    EXPECT_EQ(reach({{0, 1, 3}, 1.25}), (Counts{1, 3, 9}));
}

TEST(GaussianFilterSteps, FollowTheirFormula) {
    HostImage image = randomImage<std::uint8_t>({40, 30, 20}, 2);
    const auto steps = [&](const Placement3d& placement, double sigma) {
        GaussianFilterRun run(image, VoxelTypes::uint8, {{sigma, sigma, sigma}, 1}, placement);
        StepWatch watch;
        run.filter.run(&watch);
        EXPECT_EQ(watch.steps(), watch.total());
        return watch.total();
    };
    // 40 x 30 x 20 in tiles of 16 x 16 x 16: the cores are 14 wide with margins of 1, so 3 x 2 x 2; without as well.
    const Tile tile{16, 16, 16};
    for (const double sigma : {0.0, 1.0}) {
        EXPECT_EQ(steps({false, false}, sigma), 5U);
        EXPECT_EQ(steps({true, false}, sigma), 4U);
        EXPECT_EQ(steps({false, true}, sigma), 4U);
        EXPECT_EQ(steps({true, true}, sigma), 3U);
        EXPECT_EQ(steps({false, false, tile}, sigma), 5U * 12);
        EXPECT_EQ(steps({true, false, tile}, sigma), 4U * 12);
        EXPECT_EQ(steps({false, true, tile}, sigma), (sigma == 0 ? 4U : 5U) * 12);
        EXPECT_EQ(steps({true, true, tile}, sigma), (sigma == 0 ? 3U : 4U) * 12);
    }
}

TEST(GaussianFilterMemory, HoldsBuffersKernelsAndTheScratchOfOnePass) {
    constexpr std::uint64_t width = 64, height = 40, depth = 20, taps = 5, blocks = 132;
    HostImage image = randomImage<std::uint16_t>({width, height, depth}, 2);
    const auto peak = [&](const Placement3d& placement, bool direct) {
        GaussianFilterRun run(image, VoxelTypes::uint16, {{1, 1, 1}, 2, direct}, placement);
        const std::uint64_t before = host::deviceUse().liveBytes;
        host::resetPeakBytes();
        run.filter.run();
        EXPECT_EQ(host::deviceUse().liveBytes, before);
        return host::deviceUse().peakBytes - before;
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

TEST(GaussianFilterStream, OfTheCallerIsUsedAndKeptAndNeedsItsDevice) {
    HostImage image = randomImage<std::uint16_t>({16, 16, 4}, 3);
    GaussianFilterRun run(image, VoxelTypes::uint16, {}, {});
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    CudaContext context{0, stream};
    run.filter.cudaContext = &context;
    const std::uint64_t before = host::callCount("cudaStreamCreate");
    run.filter.run();
    context.deviceId = 7;
    EXPECT_THROW(run.filter.run(), RuntimeError) << "beside a stream the id is not checked but used";
    EXPECT_EQ(host::callCount("cudaStreamCreate"), before);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    context.stream = nullptr;
    EXPECT_NO_THROW(run.filter.run());
}

TEST(GaussianFilterTypes, WithoutAnInstanceAreNamedByTheirCode) {
    HostImage image(VoxelTypes::int64, {4, 4, 4});
    GaussianFilterRun run(image, VoxelTypes::float32, {}, {});
    Runnable* const runner = cuda::CudaGaussianFilter3d::getClassInfo()->availableRunner();
    try {
        runner->run(&run.filter);
        FAIL() << "nothing was raised";
    } catch (const RuntimeError& error) {
        EXPECT_STREQ(error.what(), "Unsupported input data type 7");
        EXPECT_EQ(error.info().file, "Cuda/src/ImageFiltering/CudaGaussianFilter3d_CUDA");
    }
}

// Images of many kinds in one run: rows only, rows with gaps, parts of larger ones.
TEST(GaussianFilterImages, MayBeOfAnyKind) {
    const ImageSize size{20, 9, 6};
    HostImage image = randomImage<float>(size, 6);
    const GaussianParameters parameters{{1.5, 1, 0.7}, 2};
    const std::vector<float> expected = plainGaussian<float, float>(image, parameters);

    std::vector<float> memory(33 * size.y * size.z);
    HostImage withGaps(VoxelTypes::float32, size, memory.data(), 33 * sizeof(float));
    RowsOnlyImage rows(HostImage(VoxelTypes::float32, size));
    HostImage large(VoxelTypes::float32, {40, 30, 12});
    const std::unique_ptr<ImageModel> deviceLarge = onDevice(large);
    ImageModelSizeProxy part(&large, 3, 20, 11, 9, 2, 6, 0, 1, 0, 1);
    ImageModelSizeProxy devicePart(deviceLarge.get(), 3, 20, 11, 9, 2, 6, 0, 1, 0, 1);
    const auto fill = [&](ImageModel& target) {
        for (std::size_t row = 0; row < size.y * size.z; ++row) {
            target.writeRow(size.x, voxels<float>(image) + row * size.x, 0, row % size.y, row / size.y, 0, 0);
        }
    };
    ImageModel* const all[] = {&withGaps, &rows, &part, &devicePart};
    for (ImageModel* source : all) fill(*source);
    for (ImageModel* source : all) {
        for (ImageModel* target : all) {
            if (target == source) continue;
            for (const unsigned tile : {0U, 8U}) {
                cuda::CudaGaussianFilter3d filter;
                filter.inputImage = source;
                filter.outputImage = target;
                filter.standardDeviation = parameters.sigma;
                filter.kernelSizeFactor = parameters.kernelSizeFactor;
                filter.tilingMode = tile == 0 ? 0 : 1;
                filter.tileSize = {tile, tile, tile};
                filter.run();
                EXPECT_EQ(readAll<float>(*target), expected);
                fill(*target);
            }
        }
    }
}
