#include "CudaAmnlmRPatches.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>

#include "CudaAmnlmStats_CUDA.h"
#include "VoxelAccess_CUDA.h"

namespace amnlm {

namespace {

/// `offset` from a position, around the ends of an axis.
std::size_t wrap(std::int64_t position, std::int64_t extent) {
    const std::int64_t remainder = position % extent;
    return static_cast<std::size_t>(remainder < 0 ? remainder + extent : remainder);
}

/// Takes patches out of one image.
struct PatchReader {
    const zel::ImageModel& image;
    const std::vector<float>& weights;
    float minimum;
    float maximum;
    float scaledMean;
    int radius;
    FailedRows& failed;

    /// @param patch  room for as many values as there are weights.
    template <typename T>
    void read(const Position& middle, float* patch) const {
        const auto extent = [&](int axis) { return static_cast<std::int64_t>(image.getDimension(axis)); };
        std::size_t p = 0;
        for (int dz = -radius; dz <= radius; ++dz) {
            const std::size_t z = wrap(std::int64_t{middle.z} + dz, extent(2));
            for (int dy = -radius; dy <= radius; ++dy) {
                const std::size_t y = wrap(std::int64_t{middle.y} + dy, extent(1));
                for (int dx = -radius; dx <= radius; ++dx, ++p) {
                    const std::size_t x = wrap(std::int64_t{middle.x} + dx, extent(0));
                    T value{};
                    if (!image.readRow(1, &value, x, y, z, 0, 0)) failed.add(x, y, z);
                    patch[p] = weights[p] * (scaledIntensity(static_cast<float>(value), minimum, maximum) - scaledMean);
                }
            }
        }
    }
};

}  // namespace

std::vector<float> patchWeights(unsigned patchRadius) {
    const int radius = static_cast<int>(patchRadius);
    const float variance = 0.5f * static_cast<float>(radius);
    std::vector<float> weights;
    for (int dz = -radius; dz <= radius; ++dz)
        for (int dy = -radius; dy <= radius; ++dy)
            for (int dx = -radius; dx <= radius; ++dx)
                weights.push_back(std::exp(-0.5f * static_cast<float>(dx * dx + dy * dy + dz * dz) / variance));
    return weights;
}

void sampleRandomPatches(RkCUDAAMNLMData& patches, const zel::ImageModel* image, float minimum, float maximum,
                         float mean, unsigned patchRadius, std::int64_t sampleCount) {
    const auto extent = [&](int axis) { return static_cast<std::int64_t>(image->getDimension(axis)); };
    const std::vector<float> weights = patchWeights(patchRadius);
    std::vector<float> host(static_cast<std::size_t>(sampleCount) * weights.size());
    std::vector<Position> positions(static_cast<std::size_t>(sampleCount));
    for (Position& position : positions) position = drawPosition(extent(0), extent(1), extent(2));

    FailedRows failed;
    const PatchReader reader{
        *image, weights, minimum, maximum, scaledIntensity(mean, minimum, maximum), static_cast<int>(patchRadius),
        failed};
    const auto readPatches = [&](const tbb::blocked_range<int>& samples) {
        withVoxelType(*image, "Cuda/src/NonLocalMeans/CudaAmnlmRPatches", [&]<typename T>() {
            for (int n = samples.begin(); n != samples.end(); ++n) {
                const auto sample = static_cast<std::size_t>(n);
                reader.read<T>(positions[sample], host.data() + sample * weights.size());
            }
        });
    };
    tbb::task_group_context context;
    tbb::parallel_for(tbb::blocked_range<int>(0, static_cast<int>(sampleCount)), readPatches, tbb::auto_partitioner(),
                      context);
    failed.raiseIfAny("read", *image);
    patches.upload(host);
}

}  // namespace amnlm
