#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "TestImages.h"
#include "tarnway/DataFrameView.h"
#include "zel/TemplateTransformation.h"
#include "zel/children/IntensityStatistics.h"

// Template matching as its formulas say, voxel by voxel in double.
namespace zel::test {

using Doubles = std::vector<double>;

inline Doubles asDoubles(const ImageModel& image) {
    Doubles result;
    visitVoxelType(image.getDataType(), RealTypes{}, [&]<typename T>() {
        for (const T voxel : readAll<T>(image)) result.push_back(static_cast<double>(voxel));
    });
    return result;
}

/// Random weights of a mask; those below 0 become 0.
inline HostImage randomWeights(const ImageSize& size, double low, double high) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> weight(low, high);
    Doubles weights(size.x * size.y * size.z);
    for (double& value : weights) value = std::max(0.0, weight(random));
    return imageOf(size, weights);
}

inline std::array<long, 3> sizeOf(const HostImage& image) {
    return {long(image.getDimension(0)), long(image.getDimension(1)), long(image.getDimension(2))};
}

/// Of voxel i, x fastest.
inline std::array<long, 3> positionIn(const std::array<long, 3>& size, std::size_t i) {
    const long n = long(i);
    return {n % size[0], n / size[0] % size[1], n / (size[0] * size[1])};
}

/// The masked normalised cross-correlation as its formula says, one position after the other. At a voxel the template's
/// voxel (size - 1) / 2 lies on it, and for the local statistics the mask's turned by half a turn about its middle.
inline Doubles directScores(const HostImage& image, const HostImage& templateImage, const HostImage& mask,
                            double threshold) {
    const Doubles I = asDoubles(image), t = asDoubles(templateImage), M = asDoubles(mask);
    const auto n = sizeOf(image), s = sizeOf(mask);
    double count = 0, sum = 0, squares = 0;
    for (std::size_t i = 0; i < M.size(); ++i) {
        if (!(M[i] > 0)) continue;
        count += 1;
        sum += M[i] * t[i];
    }
    const double mu = sum / count;
    for (std::size_t i = 0; i < M.size(); ++i) squares += M[i] > 0 ? (M[i] * t[i] - mu) * (M[i] * t[i] - mu) : 0;
    const double deviation = std::sqrt(squares / count);
    const double sigma = deviation < 1e-6 ? 1 : deviation;
    Doubles scores;
    for (std::size_t voxel = 0; voxel < I.size(); ++voxel) {
        const auto [x, y, z] = positionIn(n, voxel);
        double c = 0, a = 0, b = 0;
        for (std::size_t at = 0; at < M.size(); ++at) {
            const auto [i, j, k] = positionIn(s, at);
            const auto mirrored = M.size() - 1 - at;
            const long p = x + i - (s[0] - 1) / 2, q = y + j - (s[1] - 1) / 2, r = z + k - (s[2] - 1) / 2;
            const bool isInside = p >= 0 && p < n[0] && q >= 0 && q < n[1] && r >= 0 && r < n[2];
            const double v = isInside ? I[std::size_t((r * n[1] + q) * n[0] + p)] : 0;
            c += v * M[at] * (t[at] - mu) / sigma;
            a += v * M[mirrored];
            b += v * v * M[mirrored];
        }
        const double variance = b / count - a * a / (count * count);
        const double score = variance < threshold ? 0 : c / count / std::sqrt(variance);
        scores.push_back(std::clamp(score, -1.0, 1.0));
    }
    return scores;
}

inline double thresholdOf(const HostImage& image) {
    const auto statistics = IntensityStatistics::New(nullptr);
    statistics->inputImage = &image;
    statistics->run();
    const double s = statistics->outputStandardDeviation.get().getRealValue();
    return s * s * 0.01;
}

inline double maxDifference(const std::vector<float>& a, const Doubles& b) {
    double result = 0;
    for (std::size_t i = 0; i < a.size(); ++i) result = std::max(result, std::abs(double(a[i]) - b[i]));
    return result;
}

/// One corner or voxel of a template, taken through the turns one by one: psi about z, theta about x, phi about z; or
/// all of them back.
struct Turn {
    TemplateTransformationInfo angles;
    std::array<double, 3> centre;

    std::array<double, 3> forth(std::array<double, 3> p) const {
        return turned(p, {{{0, 1, angles.psi}, {1, 2, angles.theta}, {0, 1, angles.phi}}});
    }
    std::array<double, 3> back(std::array<double, 3> p) const {
        return turned(p, {{{0, 1, -angles.phi}, {1, 2, -angles.theta}, {0, 1, -angles.psi}}});
    }

private:
    struct Plane {
        std::size_t from, to;
        double angle;
    };
    std::array<double, 3> turned(std::array<double, 3> p, const std::array<Plane, 3>& planes) const {
        for (std::size_t axis = 0; axis < 3; ++axis) p[axis] -= centre[axis];
        for (const auto& [from, to, angle] : planes) {
            const double a = p[from], b = p[to];
            p[from] = a * std::cos(angle) - b * std::sin(angle);
            p[to] = a * std::sin(angle) + b * std::cos(angle);
        }
        for (std::size_t axis = 0; axis < 3; ++axis) p[axis] += centre[axis];
        return p;
    }
};

/// An image of doubles with its voxel size.
struct PlainVolume {
    std::array<long, 3> size;
    Doubles voxels;
    std::array<double, 3> spacing;

    PlainVolume(const std::array<long, 3>& n, const std::array<double, 3>& voxelSize)
        : size(n), voxels(std::size_t(n[0] * n[1] * n[2])), spacing(voxelSize) {}
    explicit PlainVolume(const HostImage& image)
        : PlainVolume(sizeOf(image), {image.getSpacing(0), image.getSpacing(1), image.getSpacing(2)}) {
        voxels = asDoubles(image);
    }

    HostImage image() const {
        HostImage result(VoxelTypes::float64, {std::size_t(size[0]), std::size_t(size[1]), std::size_t(size[2])});
        std::copy(voxels.begin(), voxels.end(), test::voxels<double>(result));
        return result;
    }
    /// Between voxels, as a sum over all of them; `beyond` outside.
    double at(const std::array<double, 3>& p, double beyond) const {
        double sum = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (p[axis] < -1e-6 || p[axis] > double(size[axis] - 1) + 1e-6) return beyond;
        for (std::size_t i = 0; i < voxels.size(); ++i) {
            double weight = 1;
            for (std::size_t axis = 0; axis < 3; ++axis)
                weight *= std::max(0.0, 1 - std::abs(p[axis] - positionOf(i)[axis]));
            sum += weight * voxels[i];
        }
        return sum;
    }
    /// Calls fill(position) for each voxel.
    template <typename Fill>
    void fillWith(const Fill& fill) {
        for (std::size_t i = 0; i < voxels.size(); ++i) voxels[i] = fill(positionOf(i));
    }
    std::array<double, 3> positionOf(std::size_t i) const {
        const auto [x, y, z] = positionIn(size, i);
        return {double(x), double(y), double(z)};
    }
};

/// Voxel centres shared out evenly, the edge repeated.
inline PlainVolume resized(const PlainVolume& source, const std::array<long, 3>& size) {
    PlainVolume result(size, source.spacing);
    result.fillWith([&](std::array<double, 3> p) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double last = double(source.size[axis] - 1);
            p[axis] = std::clamp((p[axis] + 0.5) * double(source.size[axis]) / double(size[axis]) - 0.5, 0.0, last);
        }
        return source.at(p, 0);
    });
    return result;
}

/// A template under a row. @param grows  whether a turned one takes up its bounding box, or keeps its size.
inline PlainVolume transformed(const PlainVolume& given, const TemplateTransformationInfo& row, bool grows,
                               const std::array<double, 3>& spacing) {
    const double scale[3] = {row.scaleX, row.scaleY, row.scaleZ};
    std::array<long, 3> size{}, inOwnVoxels{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double length = double(given.size[axis]) * scale[axis];
        inOwnVoxels[axis] = std::max(1L, std::lround(length));
        size[axis] = std::max(1L, std::lround(length * given.spacing[axis] / spacing[axis]));
    }
    if (!row.hasRotation) return size == given.size ? given : resized(given, size);
    const PlainVolume source = size == given.size ? given : resized(given, inOwnVoxels);
    Turn turn{row, {}};
    for (std::size_t axis = 0; axis < 3; ++axis)
        turn.centre[axis] = 0.5 * double(source.size[axis] - 1) * source.spacing[axis];
    std::array<double, 3> lower{}, step = source.spacing;
    size = given.size;
    if (grows || source.size != given.size || given.spacing != spacing) {
        std::array<double, 3> upper{-1e9, -1e9, -1e9};
        lower = {1e9, 1e9, 1e9};
        for (unsigned corner = 0; corner < 8; ++corner) {
            std::array<double, 3> p{};
            for (std::size_t axis = 0; axis < 3; ++axis)
                p[axis] = corner >> axis & 1U ? double(source.size[axis] - 1) * source.spacing[axis] : 0;
            p = turn.forth(p);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                lower[axis] = std::min(lower[axis], p[axis]);
                upper[axis] = std::max(upper[axis], p[axis] + spacing[axis]);
            }
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            size[axis] = std::lround((upper[axis] - lower[axis]) / spacing[axis]);
            step[axis] = (upper[axis] - lower[axis]) / double(size[axis]);
        }
    }
    PlainVolume result(size, step);
    result.fillWith([&](std::array<double, 3> p) {
        for (std::size_t axis = 0; axis < 3; ++axis) p[axis] = lower[axis] + p[axis] * step[axis];
        p = turn.back(p);
        for (std::size_t axis = 0; axis < 3; ++axis) p[axis] /= source.spacing[axis];
        return source.at(p, 0);
    });
    return result;
}

}  // namespace zel::test
