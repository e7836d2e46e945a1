#include <cuda_runtime.h>
#include <gtest/gtest.h>

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
class GaussianFilterTest : public ::testing::Test {};

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

TYPED_TEST_SUITE(GaussianFilterTest, Instances);

TYPED_TEST(GaussianFilterTest, GivesThePlainResultWhereverTheImagesLieAndHoweverTheyAreCut) {
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

TEST(GaussianFilterStreamTest, OfTheCallerNeedsItsDevice) {
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

TEST(GaussianFilterTypesTest, WithoutAnInstanceAreNamedByTheirCode) {
    HostImage image(VoxelTypes::int64, {4, 4, 4});
    GaussianFilterRun run(image, VoxelTypes::float32, {}, {});
    Runnable* const runner = cuda::CudaGaussianFilter3d::getClassInfo()->availableRunner();
    EXPECT_EQ(messageOf<RuntimeError>([&] { runner->run(&run.filter); }), "Unsupported input data type 7");
}
