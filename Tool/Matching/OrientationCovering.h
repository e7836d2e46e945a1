#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "tarnway/DataFrameView.h"

namespace zel::tool {

/// An even covering of orientation space, as rows of a matching's table.
///
/// A rotation Rz(phi) Rx(theta) Rz(psi) brings the template's z axis to the direction that theta and phi tell, and
/// turns it about itself by psi. The directions are those of a spherical Fibonacci lattice: along a spiral from pole to
/// pole, at heights in equal steps and turned by the golden angle from one to the next (Gonzalez 2010: Measurement of
/// areas on a sphere using Fibonacci and latitude-longitude lattices, Mathematical Geosciences 42). For each of them
/// psi goes round in equal steps.
class OrientationCovering {
public:
    /// @param stepDegrees     side of the square that the sphere has for each direction; above 0, at most 90.
    /// @param inPlaneDegrees  largest step of psi; above 0, at most 360.
    /// @param isHalf          only directions with z >= 0, for templates that a half turn about an axis across z leaves
    ///                        alike.
    OrientationCovering(double stepDegrees, double inPlaneDegrees, bool isHalf);

    std::size_t directionCount() const { return directions_.size(); }
    std::size_t turnCount() const { return turnCount_; }

    /// Columns phi, theta and psi; psi runs fastest.
    std::vector<tarnway::DataFrameView::Column> columns() const;

    /// The largest angle in degrees between an orientation and the covering's nearest, as far as a search finds it:
    /// over random orientations, then uphill from the worst of them. On a half sphere over the orientations whose
    /// direction has z >= 0.
    double largestGapDegrees() const;

private:
    struct Direction {
        double phi;
        double theta;
    };
    using Quaternion = std::array<double, 4>;

    double gapAt(const Quaternion& orientation) const;

    std::vector<Direction> directions_;
    std::vector<Quaternion> directionTurns_;  // of each direction with psi = 0
    std::size_t turnCount_;
    bool isHalf_;
};

}  // namespace zel::tool
