#pragma once

#include <cmath>
#include <vector>

#include "GaussianFilterRun.h"
#include "PlainConvolution.h"

namespace zel::test {

/// Normalised taps, rounded to float.
inline std::vector<float> plainTaps(double sigma, double kernelSizeFactor) {
    const auto asked = static_cast<long>(std::ceil(2 * kernelSizeFactor * sigma));
    const long half = asked / 2;
    std::vector<double> taps;
    double sum = 0;
    for (long i = -half; i <= half; ++i) {
        taps.push_back(i == 0 ? 1 : std::exp(-static_cast<double>(i * i) / (2 * sigma * sigma)));
        sum += taps.back();
    }
    for (double& tap : taps) tap /= sum;
    return {taps.begin(), taps.end()};
}

template <typename TWork, typename TOut, typename TIn>
std::vector<TOut> plainGaussian(const PlainVolume<TIn>& in, const GaussianParameters& parameters) {
    const auto taps = [&](double sigma) { return plainTaps(sigma, parameters.kernelSizeFactor); };
    const auto alongX = plainPass<TWork>(in, 0, taps(parameters.sigma.x));
    const auto alongY = plainPass<TWork>(alongX, 1, taps(parameters.sigma.y));
    return plainPass<TOut>(alongY, 2, taps(parameters.sigma.z)).voxels;
}

/// The whole filter in the plainest way, in the order of operations that it promises.
template <typename TIn, typename TOut>
std::vector<TOut> plainGaussian(const HostImage& image, const GaussianParameters& parameters) {
    const PlainVolume<TIn> in{{image.getDimension(0), image.getDimension(1), image.getDimension(2)},
                              readAll<TIn>(image)};
    if (parameters.voxelTypeIntermediate) return plainGaussian<TOut, TOut>(in, parameters);
    return plainGaussian<float, TOut>(in, parameters);
}

}  // namespace zel::test
