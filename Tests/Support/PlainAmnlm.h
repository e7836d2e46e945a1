#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "AmnlmData.h"

// The operations of the non-local means filter in double, from their definitions.
namespace zel::test {

using Values = std::vector<double>;
using Extents = AmnlmData::Extents;

/// The value at a voxel (z, y, x) of `to` by trilinear interpolation in `from`.
template <typename Element>
double interpolated(const std::vector<Element>& in, const Extents& from, const Extents& to,
                    const std::array<int, 3>& voxel, int channel) {
    double sum = 0;
    for (int corner = 0; corner < 8; ++corner) {
        double weight = 1;
        std::int64_t index = 0;
        bool inside = true;
        for (std::size_t axis = 0; axis < 3; ++axis) {  // z, y, x
            const double scale = to[axis] < 2 ? 0.0 : (from[axis] - 1.0) / (to[axis] - 1.0);
            const double exact = std::min(voxel[axis] * scale, from[axis] - 1.0), base = std::floor(exact);
            const int far = corner >> axis & 1, at = static_cast<int>(base) + far;
            weight *= far ? exact - base : 1 - exact + base;
            inside = inside && at < from[axis];
            index = index * from[axis] + at;
        }
        if (inside) sum += weight * in[static_cast<std::size_t>(index * from[3] + channel)];
    }
    return sum;
}

template <typename Element>
Values plainScaled(const std::vector<Element>& in, const Extents& from, const Extents& to) {
    Values scaled;
    for (int i = 0; i < to[0] * to[1] * to[2] * to[3]; ++i) {
        const int v = i / to[3], y = v / to[2];
        scaled.push_back(interpolated(in, from, to, {y / to[1], y % to[1], v % to[2]}, i % to[3]));
    }
    return scaled;
}

/// Both sweeps over a line of which position p has its value at line[p * stride].
/// @param weights    of the steps between the positions p - 1 and p.
/// @param recursive  whether the forward sweep takes the values that it wrote.
inline void sweepLine(double* line, std::size_t stride, const Values& weights, bool recursive) {
    double source = line[0];
    for (std::size_t p = 1; p < weights.size(); ++p) {
        const double before = recursive ? line[(p - 1) * stride] : source;
        source = line[p * stride];
        line[p * stride] += weights[p] * (before - source);
    }
    for (std::size_t p = weights.size() - 1; p-- > 0;)
        line[p * stride] += weights[p + 1] * (line[(p + 1) * stride] - line[p * stride]);
}

/// Sweeps along x, y and z, one after the other.
/// @param weightBetween  of the step from one voxel to the next.
template <typename Weight>
Values plainSweeps(Values values, const Extents& extents, bool recursiveAlongX, const Weight& weightBetween) {
    const std::size_t channels = extents[3];
    const std::size_t voxels = values.size() / channels;
    std::size_t step = 1;
    for (const int axis : {2, 1, 0}) {
        const std::size_t length = extents[axis];
        for (std::size_t v = 0; v < voxels; ++v) {
            if (v / step % length != 0) continue;
            Values weights(length);
            for (std::size_t p = 1; p < length; ++p) weights[p] = weightBetween(v + (p - 1) * step, v + p * step);
            for (std::size_t k = 0; k < channels; ++k)
                sweepLine(&values[v * channels + k], step * channels, weights, axis != 2 || recursiveAlongX);
        }
        step *= length;
    }
    return values;
}

inline Values plainHFilter(const Values& values, const Extents& extents, double sigma) {
    const double a = std::exp(-std::sqrt(2.0) / sigma);
    return plainSweeps(values, extents, false, [=](std::size_t, std::size_t) { return a; });
}

inline Values plainRFFilter(const Values& values, const Extents& extents, const Values& joint, double rangeSigma,
                            double spatialSigma) {
    const std::size_t channels = joint.size() / (values.size() / extents[3]);
    return plainSweeps(values, extents, true, [&](std::size_t from, std::size_t to) {
        double square = 0;
        for (std::size_t k = 0; k < channels; ++k)
            square += std::pow(joint[from * channels + k] - joint[to * channels + k], 2);
        const double length = std::sqrt(1 + std::pow(spatialSigma / rangeSigma, 2) * square);
        return std::pow(std::exp(-std::sqrt(2.0) / spatialSigma), length);
    });
}

inline void expectNear(const std::vector<float>& result, const Values& expected, double tolerance) {
    ASSERT_EQ(result.size(), expected.size());
    for (std::size_t i = 0; i < result.size(); ++i) ASSERT_NEAR(result[i], expected[i], tolerance) << i;
}

}  // namespace zel::test
