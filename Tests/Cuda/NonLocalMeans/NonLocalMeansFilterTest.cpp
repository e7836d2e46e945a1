// The whole non-local means filter.

#include <cmath>
#include <cstdlib>
#include <optional>

#include "DocsTable.h"
#include "ImagesOfAllKinds.h"
#include "Messages.h"
#include "NoisyPhantom.h"
#include "zel/algorithms/CudaAdaptiveManifoldNlmFilter.h"

namespace zel::test {
namespace {

struct Sigmas {
    double spatial, range;
};

/// The filter on an image, from a seed; with its defaults unless told otherwise.
HostImage filtered(const HostImage& image, VoxelTypes outputType, std::optional<Sigmas> sigmas = {}) {
    HostImage output(outputType, {image.getDimension(0), image.getDimension(1), image.getDimension(2)});
    cuda::CudaAdaptiveManifoldNlmFilter filter;
    filter.inputImage = &image;
    filter.outputImage = &output;
    if (sigmas) {
        filter.spatialSigma = sigmas->spatial;
        filter.rangeSigma = sigmas->range;
    }
    std::srand(1);
    filter.run();
    return output;
}

/// Ratios before and after the filter with its defaults.
template <typename T>
std::array<double, 2> ratios(const ImageSize& size, double sigma, double unit) {
    const std::vector<double> clean = phantom(size);
    HostImage noisy = noisyImage<T>(size, clean, sigma, unit), result = filtered(noisy, voxelTypeOf<T>);
    return {psnrOf<T>(noisy, clean, unit), psnrOf<T>(result, clean, unit)};
}

TEST(NonLocalMeansFilterTest, RaisesTheSignalToNoiseRatioAsItsPageSays) {
    const ImageSize flat{512, 512, 1}, deep{64, 64, 64};
    const std::array measured{ratios<std::uint8_t>(flat, 20, 1),    ratios<std::uint16_t>(flat, 20, 200),
                              ratios<float>(flat, 20, 0.001),       ratios<std::uint8_t>(deep, 20, 1),
                              ratios<std::uint16_t>(deep, 20, 200), ratios<float>(deep, 20, 0.001)};
    const DocsTable page("non-local-means.md", "non-local means");
    ASSERT_EQ(page.numbers.size(), 2 * measured.size());
    for (std::size_t i = 0; i < measured.size(); ++i)
        for (std::size_t k = 0; k < 2; ++k)
            EXPECT_NEAR(measured[i][k], page.numbers[2 * i + k], 0.1) << "row " << i << ", column " << k;
}

TEST(NonLocalMeansFilterTest, SameSeedGivesTheSameBitsAndOutputsOfAllTypes) {
    const HostImage noisy = noisyImage<float>({61, 47, 3}, phantom({61, 47, 3}), 10, 1);
    const std::vector<float> expected = readAll<float>(filtered(noisy, VoxelTypes::float32, Sigmas{16, 0.2}));
    EXPECT_EQ(readAll<float>(filtered(noisy, VoxelTypes::float32, Sigmas{16, 0.2})), expected);
    [&]<typename... T>(TypeList<T...>) {
        const auto expectType = [&]<typename Voxel>() {
            const std::vector<Voxel> voxels = readAll<Voxel>(filtered(noisy, voxelTypeOf<Voxel>, Sigmas{16, 0.2}));
            for (std::size_t i = 0; i < expected.size(); ++i)
                ASSERT_EQ(voxels[i], static_cast<Voxel>(static_cast<std::int64_t>(expected[i])) +
                                         (std::is_floating_point_v<Voxel> ? expected[i] - std::trunc(expected[i]) : 0))
                    << voxelTypeName(voxelTypeOf<Voxel>);
        };
        (expectType.template operator()<T>(), ...);
    }(KernelTypes{});
}

TEST(NonLocalMeansFilterTest, GoesFromImagesOfAnyKindToImagesOfAnyKindInOneStep) {
    const ImageSize size{23, 17, 3};
    const HostImage image = randomImage<std::uint16_t>(size, 5);
    const std::vector<std::uint16_t> expected = readAll<std::uint16_t>(filtered(image, VoxelTypes::uint16));
    ImagesOfAllKinds<std::uint16_t> images(image, size);
    cuda::CudaAdaptiveManifoldNlmFilter filter;
    for (ImageModel* const source : images.all()) {
        for (ImageModel* const target : images.all()) {
            if (target == source) continue;
            filter.inputImage = source;
            filter.outputImage = target;
            StepWatch canceller(&filter, 0);  // to no effect
            std::srand(1);
            filter.run(&canceller);
            EXPECT_EQ(canceller.steps(), 1U);
            EXPECT_EQ(readAll<std::uint16_t>(*target), expected);
            copyRows(image, *target);
        }
    }
}

TEST(NonLocalMeansFilterTest, ThinImagesHaveCoarseManifoldsOfOneVoxel) {
    for (const ImageSize& size : {ImageSize{40, 3, 1}, ImageSize{1, 33, 2}, ImageSize{9, 1, 1}})
        for (const float value :
             readAll<float>(filtered(randomImage<float>(size, 3), VoxelTypes::float32, Sigmas{64, 0.5})))
            ASSERT_TRUE(std::isfinite(value)) << size.x << " x " << size.y << " x " << size.z;
}

TEST(NonLocalMeansFilterTest, ConstantImagesHaveNoEigenvectors) {
    const HostImage constant(VoxelTypes::uint8, {20, 20, 2});
    EXPECT_EQ(messageOf<UnexpectedError>([&] { filtered(constant, VoxelTypes::uint8); }),
              "Eigenvectors could not be computed. Try changing the number of PCA dimensions or increasing the "
              "iterations limit.");
}

}  // namespace
}  // namespace zel::test
