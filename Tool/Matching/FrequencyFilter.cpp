#include "Matching/FrequencyFilter.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "ImageFiles/Common/Rows.h"

namespace zel::tool {

namespace {

/// exp(-ln 2 (f / half)^2): a half at f = half.
double gaussian(double squaredFrequency, double half) {
    return std::exp2(-squaredFrequency / (half * half));
}

double gainAt(const std::array<double, 3>& k, const FrequencyBands& bands) {
    const double squared = k[0] * k[0] + k[1] * k[1] + k[2] * k[2];
    double gain = 1;
    if (bands.lowPass) gain *= gaussian(squared, *bands.lowPass);
    if (bands.highPass) gain *= 1 - gaussian(squared, *bands.highPass);
    if (bands.maxTilt) {
        const double slope = std::tan(*bands.maxTilt * std::numbers::pi / 180);
        // Rounding must not take away the wedge's edge.
        if (std::abs(k[2]) > std::abs(k[0]) * slope * (1 + 1e-12)) gain = 0;
    }
    return gain;
}

}  // namespace

HostImage makeFrequencyFilter(const std::array<std::size_t, 3>& boxSize, const std::array<double, 3>& spacing,
                              const FrequencyBands& bands) {
    const ImageSize size{boxSize[0] + 1, boxSize[1], boxSize[2]};
    HostImage filter(VoxelTypes::float32, size);
    const auto frequency = [&](std::size_t axis, std::size_t index, std::size_t length) {
        const double cycles = static_cast<double>(index) - static_cast<double>(length >> 1);
        return cycles / (static_cast<double>(boxSize[axis]) * spacing[axis]);
    };
    std::vector<float> gains(size.x);
    forEachRow(size, [&](const RowIndex& row) {
        const double ky = frequency(1, row.y, size.y);
        const double kz = frequency(2, row.z, size.z);
        for (std::size_t x = 0; x < size.x; ++x) {
            gains[x] = static_cast<float>(gainAt({frequency(0, x, size.x), ky, kz}, bands));
        }
        writeWholeRow(filter, gains.data(), row);
    });
    return filter;
}

}  // namespace zel::tool
