#include "CudaAmnlmStats_CUDA.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "VoxelAccess_CUDA.h"

namespace amnlm {

namespace {

constexpr float maxDraw = 32767.0f;
/// Bits of rand() beyond the upper 15.
constexpr int surplusBits = std::bit_width(static_cast<unsigned>(RAND_MAX)) - 15;

std::int32_t drawCoordinate(std::int64_t extent) {
    const std::int64_t last = extent - 1;
    const auto drawn = static_cast<std::int64_t>(drawUnit() * static_cast<float>(last));
    return static_cast<std::int32_t>(std::min(drawn, last));  // float may round a long axis up
}

/// How many standard deviations about the mean hold `confidence` percent of a normal distribution, by the rational
/// approximation of R. E. Odeh and J. O. Evans, Applied Statistics 23 (1974), algorithm AS 70.
float normalQuantile(float confidence) {
    const float p = 0.5f - confidence / 100 * 0.5f;
    if (p <= 1e-8f) return 6;
    if (p == 0.5f) return 0;
    const float t = std::sqrt(std::log(1 / (p * p)));
    const float numerator = (((-4.536422e-5f * t - 0.020423122f) * t - 0.3422421f) * t - 1) * t - 0.32223243f;
    const float denominator = (((0.00385607f * t + 0.10353775f) * t + 0.5311035f) * t + 0.58858156f) * t + 0.09934846f;
    return t + numerator / denominator;
}

}  // namespace

float drawUnit() {
    return static_cast<float>(std::rand() >> surplusBits) / maxDraw;
}

Position drawPosition(std::int64_t extentX, std::int64_t extentY, std::int64_t extentZ) {
    const std::int32_t z = drawCoordinate(extentZ);
    const std::int32_t y = drawCoordinate(extentY);
    const std::int32_t x = drawCoordinate(extentX);
    return {x, y, z};
}

std::int64_t computeSampleSize(std::uint64_t population, float confidence, float margin, float proportion) {
    const double quantile = normalQuantile(confidence);
    const double variance = quantile * quantile * proportion * (100 - proportion);
    const double denominator = static_cast<double>(margin * margin * static_cast<float>(population - 1)) + variance;
    if (!(denominator > 0)) return 0;
    return static_cast<std::int64_t>(std::ceil(static_cast<double>(population) * variance / denominator));
}

float estimateMeanIntensity(const zel::ImageModel* image, float confidence) {
    const auto extent = [&](int axis) { return static_cast<std::int64_t>(image->getDimension(axis)); };
    const std::int64_t population = extent(0) * extent(1) * extent(2);
    const std::int64_t count = computeSampleSize(static_cast<std::uint64_t>(population), confidence, 5, 50);
    float sum = 0;
    FailedRows failed;
    withVoxelType(*image, "Cuda/src/NonLocalMeans/CudaAmnlmStats_CUDA", [&]<typename T>() {
        for (std::int64_t i = 0; i < count; ++i) {
            const Position at = drawPosition(extent(0), extent(1), extent(2));
            T value{};
            if (!image->readRow(1, &value, at.x, at.y, at.z, 0, 0)) failed.add(at.x, at.y, at.z);
            sum += static_cast<float>(value) / static_cast<float>(count);
        }
    });
    failed.raiseIfAny("read", *image);
    return sum;
}

}  // namespace amnlm
