#include "GaussianFilterRun.h"
#include "Messages.h"
#include "PlainFilters.h"
#include "RunChecks.h"
#include "zel/AlgoInfo.h"

using namespace zel;
using namespace zel::test;

namespace {

/// Normalised taps, rounded to float.
std::vector<float> plainTaps(double sigma, double kernelSizeFactor) {
    const auto half = static_cast<long>(std::ceil(2 * kernelSizeFactor * sigma)) / 2;
    std::vector<double> taps;
    double sum = 0;
    for (long i = -half; i <= half; ++i) {
        taps.push_back(i == 0 ? 1 : std::exp(-static_cast<double>(i * i) / (2 * sigma * sigma)));
        sum += taps.back();
    }
    for (double& tap : taps) tap /= sum;
    return {taps.begin(), taps.end()};
}

/// The whole filter in the order of operations that it promises.
template <typename TOut, typename TIn>
std::vector<TOut> plainGaussian(const PlainVolume<TIn>& in, const GaussianParameters& parameters) {
    const auto taps = [&](double sigma) { return plainTaps(sigma, parameters.kernelSizeFactor); };
    const auto throughVolumesOf = [&]<typename Work>(Work) {
        const auto alongX = plainPass<Work>(in, 0, taps(parameters.sigma.x));
        const auto alongY = plainPass<Work>(alongX, 1, taps(parameters.sigma.y));
        return plainPass<TOut>(alongY, 2, taps(parameters.sigma.z)).voxels;
    };
    return parameters.voxelTypeIntermediate ? throughVolumesOf(TOut{}) : throughVolumesOf(float{});
}

// Volumes of a few voxels along each axis, also flat ones and such that are smaller than the kernel.
template <typename In, typename Out>
void expectPlainResultEverywhere() {
    for (unsigned seed = 0; seed < 8; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto number = [&](unsigned count) { return static_cast<double>(random() % count); };
        const auto sigma = [&] { return random() % 4 == 0 ? 0 : 0.2 + number(20) / 10; };
        const ImageSize size{1 + random() % 24, 1 + random() % 12, random() % 3 == 0 ? 1 : 1 + random() % 9};
        const GaussianParameters parameters{{sigma(), sigma(), sigma()}, 0.5 + number(5) / 2, seed % 2 == 1};

        HostImage image = randomImage<In>(size, seed);
        const PlainVolume<In> volume{{size.x, size.y, size.z}, readAll<In>(image)};
        std::vector<Vector3<unsigned>> tiles{{0, 0, 0}, {9, 7, 5}, {100, 8, 3}, {5, 100, 6}};
        if (volume.voxels.size() < 300) tiles.push_back({1, 1, 1});  // a tile for each voxel
        expectEverywhere(plainGaussian<Out>(volume, parameters), tiles, [&](const Placement3d& placement) {
            return GaussianFilterRun(image, voxelTypeOf<Out>, parameters, placement);
        });
    }
}

template <typename T>
class GaussianFilterTest : public ::testing::Test {};
TYPED_TEST_SUITE(GaussianFilterTest, decltype(testedTypes(KernelTypes{})));

}  // namespace

TYPED_TEST(GaussianFilterTest, GivesThePlainResultWhereverTheImagesLieAndHoweverTheyAreCut) {
    expectPlainResultEverywhere<TypeParam, TypeParam>();
    expectPlainResultEverywhere<TypeParam, float>();
}

TEST(GaussianFilterStreamTest, OfTheCallerNeedsItsDevice) {
    HostImage image = randomImage<std::uint16_t>({16, 16, 4}, 3);
    GaussianFilterRun run(image, VoxelTypes::uint16, {}, {});
    CallersStream callers;
    run.filter.cudaContext = &callers.context;
    for (const int id : {7, -1}) {
        callers.context.deviceId = id;
        EXPECT_THROW(run.filter.run(), RuntimeError) << "beside a stream " << id << " is used as it is";
    }
    CudaContext withoutStream{7, nullptr};
    run.filter.cudaContext = &withoutStream;
    EXPECT_NO_THROW(run.filter.run());
}

TEST(GaussianFilterTypesTest, WithoutAnInstanceAreNamedByTheirCode) {
    HostImage image(VoxelTypes::int64, {4, 4, 4});
    GaussianFilterRun run(image, VoxelTypes::float32, {}, {});
    Runnable* const runner = cuda::CudaGaussianFilter3d::getClassInfo()->availableRunner();
    EXPECT_EQ(messageOf([&] { runner->run(&run.filter); }), "Unsupported input data type 7");
}
