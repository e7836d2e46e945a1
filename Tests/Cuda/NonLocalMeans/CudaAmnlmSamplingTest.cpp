#include <cmath>
#include <cstdlib>
#include <functional>

#include "AmnlmData.h"
#include "Messages.h"
#include "NonLocalMeans/CudaAmnlmRPatches.h"
#include "NonLocalMeans/CudaAmnlmStats_CUDA.h"
#include "TestImages.h"

namespace zel::test {
namespace {

TEST(CudaAmnlmSamplingTest, SampleSizesFollowThePopulation) {
    const std::pair<std::uint64_t, std::int64_t> sizes[] = {
        {0, 0}, {1, 1}, {10, 10}, {100, 80}, {1000, 278}, {10000, 370}, {1000000, 384}, {1000000000, 385}};
    for (const auto& [population, size] : sizes)
        EXPECT_EQ(amnlm::computeSampleSize(population, 95, 5, 50), size) << "of " << population;
    EXPECT_EQ(amnlm::computeSampleSize(1000, 0, 5, 50), 0);
    EXPECT_EQ(amnlm::computeSampleSize(1000000000, 100, 5, 50), 3600) << "6 standard deviations";
}

/// Index of the plane that the next draw gives on an axis.
std::size_t drawnPlane(std::size_t extent) {
    const int upper15Bits = std::rand() >> 16;
    return static_cast<std::size_t>(static_cast<float>(upper15Bits) / 32767.0f * static_cast<float>(extent - 1));
}

std::array<std::size_t, 3> drawnVoxel(const ImageSize& size) {
    const std::size_t z = drawnPlane(size.z), y = drawnPlane(size.y), x = drawnPlane(size.x);
    return {x, y, z};
}

TEST(CudaAmnlmSamplingTest, MeanIsThatOfTheDrawnVoxels) {
    ASSERT_EQ(RAND_MAX, 2147483647);
    for (const ImageSize& size : {ImageSize{9, 7, 5}, ImageSize{40, 1, 1}}) {
        HostImage image = randomImage<std::int16_t>(size, 8);
        std::srand(3);
        const auto count = amnlm::computeSampleSize(size.x * size.y * size.z, 95, 5, 50);
        float mean = 0;
        for (std::int64_t i = 0; i < count; ++i) {
            const auto [x, y, z] = drawnVoxel(size);
            mean += static_cast<float>(voxels<std::int16_t>(image)[(z * size.y + y) * size.x + x]) /
                    static_cast<float>(count);
        }
        std::srand(3);
        EXPECT_EQ(amnlm::estimateMeanIntensity(&image, 95), mean);
        EXPECT_EQ(amnlm::estimateMeanIntensity(&image, 0), 0) << "of no voxels";
    }
}

// Also where the patch is wider than the image, in which it then meets voxels more than once.
TEST(CudaAmnlmSamplingTest, PatchesAreWeightedFreeOfTheMeanAndPeriodic) {
    const float minimum = -100, maximum = 300, mean = 20;
    for (const ImageSize& size : {ImageSize{6, 5, 4}, ImageSize{3, 2, 1}})
        for (const int radius : {1, 2}) {
            SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << " x " << size.z << ", radius " << radius);
            HostImage image = randomImage<float>(size, 9);
            const std::int32_t width = 2 * radius + 1, samples = 7;
            AmnlmData patches({width, width, width, samples});
            std::srand(4);
            amnlm::sampleRandomPatches(patches, &image, minimum, maximum, mean, static_cast<unsigned>(radius), samples);
            std::srand(4);
            std::vector<double> expected;
            const auto at = [&](std::size_t middle, int offset, std::size_t extent) {
                return (middle + 10 * extent + static_cast<std::size_t>(offset)) % extent;
            };
            for (int n = 0; n < samples; ++n) {
                const auto [x, y, z] = drawnVoxel(size);
                for (int dz = -radius; dz <= radius; ++dz)
                    for (int dy = -radius; dy <= radius; ++dy)
                        for (int dx = -radius; dx <= radius; ++dx) {
                            const std::size_t row = at(z, dz, size.z) * size.y + at(y, dy, size.y);
                            const double value = voxels<float>(image)[row * size.x + at(x, dx, size.x)];
                            const double weight = std::exp(-(dx * dx + dy * dy + dz * dz) / double(radius));
                            expected.push_back(weight * (value - mean) / (maximum - minimum));
                        }
            }
            const std::vector<float> values = patches.values();
            ASSERT_EQ(values.size(), expected.size());
            for (std::size_t i = 0; i < values.size(); ++i) ASSERT_NEAR(values[i], expected[i], 2e-7) << i;
        }
}

TEST(CudaAmnlmSamplingTest, VoxelsThatCannotBeReadAreNamed) {
    const RowsOnlyImage image(HostImage(VoxelTypes::uint8, {1, 4, 1}), 1);
    const std::string message = "Cannot read a row at the coordinates (0, 1, 0, 0, 0) in the image (1, 4, 1, 1, 1)";
    std::srand(1);
    EXPECT_EQ(messageOf([&] { amnlm::estimateMeanIntensity(&image, 100); }), message);
    AmnlmData patches({3, 3, 3, 20});
    EXPECT_EQ(messageOf([&] { amnlm::sampleRandomPatches(patches, &image, 0, 1, 0, 1, 20); }), message);
    const HostImage odd(VoxelTypes::complex64, {2, 2, 2});
    for (const auto& read : std::initializer_list<std::function<void()>>{
             [&] { amnlm::estimateMeanIntensity(&odd, 95); },
             [&] { amnlm::sampleRandomPatches(patches, &odd, 0, 1, 0, 1, 20); }})
        EXPECT_EQ(messageOf<UnexpectedError>(read), "Unsupported primitive type");
}

}  // namespace
}  // namespace zel::test
