#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "tarnway/DataFrameView.h"
#include "tarnway/Matrix.h"
#include "zel/export.h"

namespace zel {

/// How one row of a transformation table changes a template.
///
/// A table has columns named phi, theta and psi (radians) and scaleX, scaleY and scaleZ (factors), any of them and in
/// any order. A missing angle is 0, a missing scale 1.
struct TemplateTransformationInfo {
    double phi = 0;    ///< first Euler angle, radians, about z
    double theta = 0;  ///< second, about x
    double psi = 0;    ///< third, about z
    bool hasRotation = false;
    double scaleX = 1;
    double scaleY = 1;
    double scaleZ = 1;
    bool hasScale = false;
};

/// Looks at every column and every cell of a table, which `name` stands for in messages.
/// @throws RuntimeError naming the first unknown column, angle that is not finite, or scale that is not finite and
///                      above 0.
ZEL_API void requireTransformations(std::string_view name, const tarnway::DataFrameView& table);

/// Fills `info` from a row of a table.
/// @param columnCount  columns of the table; 0, as without a table, for no transformation.
ZEL_API void updateTemplateTransformationInfo(const tarnway::DataFrameView* table, std::size_t row,
                                              std::size_t columnCount, TemplateTransformationInfo& info);

/// Rz(phi) Rx(theta) Rz(psi), acting on column vectors.
ZEL_API tarnway::Matrix<double, 3> rotationMatrix(const TemplateTransformationInfo& info);

/// Voxels of an image that is scaled and brought to another voxel size: length * scale * ratio, rounded half away from
/// zero, at least 1. @param ratio  old spacing / new spacing.
ZEL_API std::size_t scaledLength(std::size_t length, double scale, double ratio);

/// Boxes that hold the template, in voxels of the image, under each row of a table: the smallest along each axis, and
/// the largest, which is never below the template's own size. A rotated template takes up its bounding box. The axes of
/// template and image lie alike in the world.
/// @param table  null for the template as it is.
ZEL_API void computeMinimalMaximalBoxSize(const tarnway::DataFrameView* table,
                                          const std::array<std::size_t, 3>& templateSize,
                                          const std::array<double, 3>& templateSpacing,
                                          const std::array<double, 3>& imageSpacing,
                                          std::array<std::size_t, 3>& minimalBoxSize,
                                          std::array<std::size_t, 3>& maximalBoxSize);

}  // namespace zel
