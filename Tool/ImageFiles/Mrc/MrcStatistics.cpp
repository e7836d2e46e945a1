#include "ImageFiles/Mrc/MrcStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "ImageFiles/Common/Rows.h"

namespace zel::tool {

namespace {

template <typename T, typename Body>
void forEachFiniteVoxel(const ImageModel& image, const Progress& progress, const Body& body) {
    const ImageSize size = imageSizeOf(image);
    std::vector<T> row(size.x);
    const auto visitRow = [&](const RowIndex& index) {
        readWholeRow(image, row.data(), index);
        for (const T voxel : row) {
            const auto value = static_cast<double>(voxel);
            if (std::isfinite(value)) body(value);
        }
    };
    forEachRow(size, visitRow, progress);
}

// In two passes, since the sum of squares of voxels far from 0 loses their deviation to rounding.
template <typename T>
MrcStatistics statisticsOf(const ImageModel& image, const Progress& progress) {
    double count = 0, sum = 0, squares = 0;
    double minimum = std::numeric_limits<double>::infinity(), maximum = -minimum;
    forEachFiniteVoxel<T>(image, partOf(progress, 0, 0.5), [&](double value) {
        ++count;
        sum += value;
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
    });
    if (count == 0) return {};
    const double mean = sum / count;
    forEachFiniteVoxel<T>(image, partOf(progress, 0.5, 1),
                          [&](double value) { squares += (value - mean) * (value - mean); });
    return {.minimum = minimum, .maximum = maximum, .mean = mean, .deviation = std::sqrt(squares / count)};
}

}  // namespace

MrcStatistics mrcStatisticsOf(const ImageModel& image, const Progress& progress) {
    MrcStatistics statistics;
    visitVoxelType(image.getDataType(), RealTypes{},
                   [&]<typename T>() { statistics = statisticsOf<T>(image, progress); });
    return statistics;
}

}  // namespace zel::tool
