#include "Matching/OrientationCovering.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace zel::tool {

namespace {

constexpr double degrees = std::numbers::pi / 180;

using Quaternion = std::array<double, 4>;

Quaternion product(const Quaternion& a, const Quaternion& b) {
    return {
        a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3], a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
        a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1], a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]};
}

Quaternion normalized(Quaternion q) {
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    for (double& part : q) part /= length;
    return q;
}

/// Height of the direction that an orientation gives the z axis.
double heightOf(const Quaternion& q) {
    return 1 - 2 * (q[1] * q[1] + q[2] * q[2]);
}

Quaternion nearby(const Quaternion& q, double angle, std::mt19937_64& random) {
    std::normal_distribution<double> normal;
    const Quaternion small = {1, angle * normal(random), angle * normal(random), angle * normal(random)};
    return normalized(product(q, small));
}

}  // namespace

OrientationCovering::OrientationCovering(double stepDegrees, double inPlaneDegrees, bool isHalf)
    : turnCount_(static_cast<std::size_t>(std::ceil(360 / inPlaneDegrees - 1e-9))), isHalf_(isHalf) {
    const double step = stepDegrees * degrees;
    const double area = (isHalf ? 2 : 4) * std::numbers::pi;
    const auto count = static_cast<std::size_t>(std::ceil(area / (step * step)));
    const double goldenAngle = std::numbers::pi * (3 - std::sqrt(5.0));
    for (std::size_t i = 0; i < count; ++i) {
        const double height = 1 - (isHalf ? 1 : 2) * (static_cast<double>(i) + 0.5) / static_cast<double>(count);
        const Direction direction{std::fmod(static_cast<double>(i) * goldenAngle, 2 * std::numbers::pi),
                                  std::acos(height)};
        directions_.push_back(direction);
        directionTurns_.push_back(product({std::cos(direction.phi / 2), 0, 0, std::sin(direction.phi / 2)},
                                          {std::cos(direction.theta / 2), std::sin(direction.theta / 2), 0, 0}));
    }
}

std::vector<tarnway::DataFrameView::Column> OrientationCovering::columns() const {
    std::vector<tarnway::DataFrameView::Column> columns{{"phi", {}}, {"theta", {}}, {"psi", {}}};
    for (const Direction& direction : directions_) {
        for (std::size_t turn = 0; turn < turnCount_; ++turn) {
            columns[0].values.push_back(direction.phi);
            columns[1].values.push_back(direction.theta);
            columns[2].values.push_back(2 * std::numbers::pi * static_cast<double>(turn) /
                                        static_cast<double>(turnCount_));
        }
    }
    return columns;
}

double OrientationCovering::gapAt(const Quaternion& q) const {
    const double turn = 2 * std::numbers::pi / static_cast<double>(turnCount_);
    double nearest = 0;
    for (const Quaternion& d : directionTurns_) {
        // What is left when the direction's turn is undone: cos and sin of half the in-plane angle, if all else fits.
        const double along = d[0] * q[0] + d[1] * q[1] + d[2] * q[2] + d[3] * q[3];
        const double across = d[0] * q[3] - d[1] * q[2] + d[2] * q[1] - d[3] * q[0];
        // No psi comes nearer than this.
        const double best = along * along + across * across;
        if (best <= nearest * nearest) continue;
        const double psi = 2 * std::atan2(across, along);
        const double rest = psi - std::round(psi / turn) * turn;
        nearest = std::max(nearest, std::sqrt(best) * std::cos(rest / 2));
    }
    return 2 * std::acos(std::min(1.0, nearest)) / degrees;
}

double OrientationCovering::largestGapDegrees() const {
    constexpr std::size_t samples = 20000;
    constexpr std::size_t climbs = 16;
    constexpr int stepsOfClimb = 300;
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal;
    std::vector<std::pair<double, Quaternion>> found;
    while (found.size() < samples) {
        const Quaternion q = normalized({normal(random), normal(random), normal(random), normal(random)});
        if (!isHalf_ || heightOf(q) >= 0) found.emplace_back(gapAt(q), q);
    }
    std::partial_sort(found.begin(), found.begin() + climbs, found.end(),
                      [](const auto& a, const auto& b) { return a.first > b.first; });
    double largest = 0;
    for (std::size_t i = 0; i < climbs; ++i) {
        auto [gap, orientation] = found[i];
        double reach = gap * degrees / 8;
        for (int step = 0; step < stepsOfClimb; ++step) {
            const Quaternion candidate = nearby(orientation, reach, random);
            const double there = isHalf_ && heightOf(candidate) < 0 ? 0 : gapAt(candidate);
            if (there > gap) {
                gap = there;
                orientation = candidate;
            } else {
                reach *= 0.97;
            }
        }
        largest = std::max(largest, gap);
    }
    return largest;
}

}  // namespace zel::tool
