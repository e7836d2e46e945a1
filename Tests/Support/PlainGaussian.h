#pragma once

#include "GaussianFilterRun.h"
#include "PlainFilters.h"

namespace zel::test {

/// Normalised taps, rounded to float.
inline std::vector<float> plainTaps(double sigma, double kernelSizeFactor) {
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

}  // namespace zel::test
