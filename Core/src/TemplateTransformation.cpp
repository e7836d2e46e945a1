#include "zel/TemplateTransformation.h"

#include <algorithm>
#include <cmath>

#include "Helper/raise.h"
#include "zel/Exceptions.h"

namespace zel {

namespace {

using Size = std::array<std::size_t, 3>;
using Spacing = std::array<double, 3>;

constexpr std::array<std::size_t, 3> axes = {0, 1, 2};

/// At least 1, and at most more than any image has.
std::size_t wholeVoxels(double length) {
    return static_cast<std::size_t>(std::clamp(std::round(length), 1.0, 1e15));
}

Size boxSize(const TemplateTransformationInfo& info, const Size& templateSize, const Spacing& templateSpacing,
             const Spacing& imageSpacing) {
    const Spacing scale = {info.scaleX, info.scaleY, info.scaleZ};
    Size inImageVoxels{};
    for (const std::size_t axis : axes) {
        inImageVoxels[axis] = scaledLength(templateSize[axis], scale[axis], templateSpacing[axis] / imageSpacing[axis]);
    }
    if (!info.hasRotation) return inImageVoxels;

    // A rotation brings the template into the image's voxels itself; what is resized before it keeps its own.
    Size rotated = templateSize;
    if (inImageVoxels != templateSize) {
        for (const std::size_t axis : axes) rotated[axis] = scaledLength(templateSize[axis], scale[axis], 1);
    }
    const tarnway::Matrix<double, 3> rotation = rotationMatrix(info);
    Size box{};
    for (const std::size_t axis : axes) {
        // Whole voxels: from the lower border of the first to the upper border of the last.
        double length = imageSpacing[axis];
        for (const std::size_t k : axes) {
            length += std::abs(rotation.at(axis, k)) * templateSpacing[k] * static_cast<double>(rotated[k] - 1);
        }
        // The run adds up the corners in another order: where that may round up, the box has the voxel.
        constexpr double rounding = 1e-9;
        box[axis] = wholeVoxels(length / imageSpacing[axis] + rounding);
    }
    return box;
}

}  // namespace

void requireTransformations(std::string_view name, const tarnway::DataFrameView& table) {
    constexpr const char* thisFile = "Core/src/TemplateTransformation";
    constexpr std::array angles = {"phi", "theta", "psi"};
    constexpr std::array scales = {"scaleX", "scaleY", "scaleZ"};
    const auto [columns, rows] = std::array{table.shape()[0], table.shape()[1]};
    for (std::size_t column = 0; column < columns; ++column) {
        const std::string& columnName = table.columnName(column);
        const bool isScale = std::find(scales.begin(), scales.end(), columnName) != scales.end();
        if (!isScale && std::find(angles.begin(), angles.end(), columnName) == angles.end()) {
            raise<RuntimeError>(thisFile, __LINE__, name, " has a column \"", columnName,
                                "\"; the columns are phi, theta, psi, scaleX, scaleY and scaleZ");
        }
        for (std::size_t row = 0; row < rows; ++row) {
            const double value = table.at(row, column);
            if (std::isfinite(value) && (!isScale || value > 0)) continue;
            raise<RuntimeError>(thisFile, __LINE__, name, " has ", columnName, " ", value, " in row ", row,
                                isScale ? "; a scale must be a finite number above 0"
                                        : "; an angle must be a finite number of radians");
        }
    }
}

void updateTemplateTransformationInfo(const tarnway::DataFrameView* table, std::size_t row, std::size_t columnCount,
                                      TemplateTransformationInfo& info) {
    info = {};
    if (table == nullptr || columnCount == 0) return;
    const auto read = [&](const char* column, double& value) {
        if (const auto index = table->columnIndex(column)) value = table->at(row, *index);
    };
    read("phi", info.phi);
    read("theta", info.theta);
    read("psi", info.psi);
    read("scaleX", info.scaleX);
    read("scaleY", info.scaleY);
    read("scaleZ", info.scaleZ);
    info.hasRotation = info.phi != 0 || info.theta != 0 || info.psi != 0;
    info.hasScale = info.scaleX != 1 || info.scaleY != 1 || info.scaleZ != 1;
}

std::size_t scaledLength(std::size_t length, double scale, double ratio) {
    return wholeVoxels(static_cast<double>(length) * scale * ratio);
}

tarnway::Matrix<double, 3> rotationMatrix(const TemplateTransformationInfo& info) {
    const double c1 = std::cos(info.phi);
    const double s1 = std::sin(info.phi);
    const double c2 = std::cos(info.theta);
    const double s2 = std::sin(info.theta);
    const double c3 = std::cos(info.psi);
    const double s3 = std::sin(info.psi);
    const double rows[3][3] = {
        {c1 * c3 - s1 * c2 * s3, -c1 * s3 - s1 * c2 * c3, s1 * s2},
        {s1 * c3 + c1 * c2 * s3, -s1 * s3 + c1 * c2 * c3, -c1 * s2},
        {s2 * s3, s2 * c3, c2},
    };
    tarnway::Matrix<double, 3> rotation;
    for (const std::size_t row : axes) {
        for (const std::size_t column : axes) rotation.setAt(row, column, rows[row][column]);
    }
    return rotation;
}

void computeMinimalMaximalBoxSize(const tarnway::DataFrameView* table, const std::array<std::size_t, 3>& templateSize,
                                  const std::array<double, 3>& templateSpacing,
                                  const std::array<double, 3>& imageSpacing, std::array<std::size_t, 3>& minimalBoxSize,
                                  std::array<std::size_t, 3>& maximalBoxSize) {
    maximalBoxSize = templateSize;
    minimalBoxSize = templateSize;
    const std::size_t columns = table == nullptr ? 0 : table->shape()[0];
    const std::size_t rows = table == nullptr ? 1 : table->shape()[1];
    for (std::size_t row = 0; row < rows; ++row) {
        TemplateTransformationInfo info;
        updateTemplateTransformationInfo(table, row, columns, info);
        const Size box = boxSize(info, templateSize, templateSpacing, imageSpacing);
        for (const std::size_t axis : axes) {
            minimalBoxSize[axis] = row == 0 ? box[axis] : std::min(minimalBoxSize[axis], box[axis]);
            maximalBoxSize[axis] = std::max(maximalBoxSize[axis], box[axis]);
        }
    }
}

}  // namespace zel
