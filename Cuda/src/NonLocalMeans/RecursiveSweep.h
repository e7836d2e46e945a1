#pragma once

#include <cuda_runtime.h>

#include <cmath>

#include "lanes.h"

// What the two recursive filters have in common.
namespace amnlm {

/// Feedback per step of a first-order recursive filter that is `sigma` voxels wide, above 0.
inline float feedbackOf(float sigma) {
    return std::exp(-std::sqrt(2.0f) / sigma);
}

/// The shape of the sweeps' launches: a thread for each of `lines` lines in each of `layers` layers.
inline cudaLaunchConfig_t lineLaunch(int lines, int layers) {
    cudaLaunchConfig_t config{};
    config.gridDim = dim3((lines + 7) / 8, (layers + 7) / 8);
    config.blockDim = dim3(8, 8, 1);
    return config;
}

/// One step of a sweep: what came before enters by `weight`.
__device__ __forceinline__ float blend(float weight, float before, float here) {
    return std::fma(weight, before - here, here);
}

/// Positions that the sweep forward walks over at a time: what it is prepared for is in the cache still.
inline constexpr int sweepStretch = 64;

/// Sweeps along each line of an image in place, forward and then back; each step takes the value that the step before
/// wrote, and the ends stay as they are. Lines shorter than 2 stay unchanged.
/// @param weight       of each step to begin with.
/// @param prepare      called as prepare(lines, begin, end) before the first steps to the positions begin ... end - 1.
/// @param weightsUpTo  called as weightsUpTo(weights, lines, end) before the step, in either direction, between the
///                     positions end - 1 and end: may set weights[line] anew.
template <int axis, typename Prepare, typename Weights>
__device__ __forceinline__ void sweepBothWays(float* data, const zel::cuda::SweepAxis<axis> along, float weight,
                                              Prepare prepare, Weights weightsUpTo) {
    const int length = along.length();
    if (length < 2) return;
    zel::cuda::forEachSweepLine(along, [=](const auto lines) {
        auto value = lines.fill(0.0f);
        auto weights = lines.fillLines(weight);
        lines.each([&](const auto i) { value[i] = data[lines.at(0, i)]; });
        const auto step = [&](int position, int end) {
            weightsUpTo(weights, lines, end);
            lines.each([&](const auto i) {
                value[i] = blend(weights[lines.lineOf(i)], value[i], data[lines.at(position, i)]);
                data[lines.at(position, i)] = value[i];
            });
        };
        for (int begin = 1; begin < length; begin += sweepStretch) {
            const int end = length - begin < sweepStretch ? length : begin + sweepStretch;
            prepare(lines, begin, end);
            for (int p = begin; p < end; ++p) step(p, p);
        }
        for (int p = length - 2; p >= 0; --p) step(p, p + 1);
    });
}

}  // namespace amnlm
