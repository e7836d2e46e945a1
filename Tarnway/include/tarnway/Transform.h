#pragma once

#include "tarnway/Matrix.h"
#include "tarnway/Vector.h"
#include "tarnway/export.h"

/// Affine and projective maps of space, as 4 x 4 matrices with the translation in the last column.
namespace tarnway {

using Point = Vector<double, 3>;
using Transform = Matrix<double, 4>;

TARNWAY_API Transform translation(const Point& offset);
/// First b, then a.
TARNWAY_API Transform operator*(const Transform& a, const Transform& b);
/// By cofactors. @throws std::invalid_argument when the determinant is 0 or not finite.
TARNWAY_API Transform inverse(const Transform& transform);
/// Where a point goes; its fourth coordinate is divided out.
TARNWAY_API Point operator*(const Transform& transform, const Point& point);

}  // namespace tarnway
