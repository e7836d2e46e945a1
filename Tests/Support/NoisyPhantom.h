#pragma once

#include <algorithm>
#include <cmath>

#include "TestImages.h"

// Images to take noise out of.
namespace zel::test {

/// Balls and boxes in front of a slope, between 40 and 220 of 255.
inline std::vector<double> phantom(const ImageSize& size) {
    std::mt19937 random(11);
    const auto unit = [&] { return static_cast<double>(random() % 1000) / 1000; };
    std::vector<double> values;
    for (std::size_t i = 0; i < size.x * size.y * size.z; ++i)
        values.push_back(60 + 60 * static_cast<double>(i % size.x) / static_cast<double>(size.x));
    for (int shape = 0; shape < 24; ++shape) {
        const std::array middle{unit(), unit(), size.z > 1 ? unit() : 0.0};
        const double radius = 0.04 + 0.1 * unit(), value = 40 + 180 * unit();
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double x = static_cast<double>(i % size.x) / static_cast<double>(size.x) - middle[0];
            const double y = static_cast<double>(i / size.x % size.y) / static_cast<double>(size.y) - middle[1];
            const std::size_t slice = i / (size.x * size.y);
            const double z = static_cast<double>(slice) / static_cast<double>(size.z) - middle[2];
            const bool inside = shape % 2 == 0 ? x * x + y * y + z * z < radius * radius
                                               : std::max({std::abs(x), std::abs(y), std::abs(z)}) < radius;
            if (inside) values[i] = value;
        }
    }
    return values;
}

/// The values times `unit` with Gaussian noise, rounded where the type has whole numbers.
template <typename T>
HostImage noisyImage(const ImageSize& size, const std::vector<double>& values, double sigma, double unit) {
    HostImage image(voxelTypeOf<T>, size);
    std::mt19937 random(12);
    std::normal_distribution<double> noise(0, sigma);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double value = std::clamp(values[i] + noise(random), 0.0, 255.0) * unit;
        voxels<T>(image)[i] = static_cast<T>(std::is_integral_v<T> ? std::round(value) : value);
    }
    return image;
}

/// Peak signal-to-noise ratio in dB.
template <typename T>
double psnrOf(HostImage& image, const std::vector<double>& values, double unit) {
    double squares = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        // Half a unit: filtered integers are truncated.
        const double value = (static_cast<double>(voxels<T>(image)[i]) + (std::is_integral_v<T> ? 0.5 : 0)) / unit;
        squares += (value - values[i]) * (value - values[i]);
    }
    return 10 * std::log10(255 * 255 / (squares / static_cast<double>(values.size())));
}

}  // namespace zel::test
