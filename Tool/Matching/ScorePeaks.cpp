#include "Matching/ScorePeaks.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "ImageFiles/Common/Rows.h"
#include "zel/ImageModelAdapter.h"

namespace zel::tool {

namespace {

/// A volume as doubles.
class Volume {
public:
    explicit Volume(const ImageModel& image) : size_(imageSizeOf(image)), voxels_(size_.x * size_.y * size_.z) {
        const ImageModelAdapter asDouble(&image, VoxelTypes::float64, DataConvertionTypes::cast);
        forEachRow(size_, [&](const RowIndex& row) { readWholeRow(asDouble, &voxels_[index(0, row.y, row.z)], row); });
    }

    const ImageSize& size() const { return size_; }
    double at(std::size_t x, std::size_t y, std::size_t z) const { return voxels_[index(x, y, z)]; }

    /// No neighbour exceeds it, and none before it in memory equals it.
    bool isMaximum(std::size_t x, std::size_t y, std::size_t z) const {
        const double value = at(x, y, z);
        if (std::isnan(value)) return false;
        const std::size_t here = index(x, y, z);
        for (std::size_t k = before(z); k < behind(z, size_.z); ++k) {
            for (std::size_t j = before(y); j < behind(y, size_.y); ++j) {
                for (std::size_t i = before(x); i < behind(x, size_.x); ++i) {
                    const double other = at(i, j, k);
                    if (other > value || (other == value && index(i, j, k) < here)) return false;
                }
            }
        }
        return true;
    }

private:
    static std::size_t before(std::size_t position) { return position == 0 ? 0 : position - 1; }
    static std::size_t behind(std::size_t position, std::size_t size) { return std::min(position + 2, size); }
    std::size_t index(std::size_t x, std::size_t y, std::size_t z) const { return (z * size_.y + y) * size_.x + x; }

    ImageSize size_;
    std::vector<double> voxels_;
};

/// Peaks that were taken, in cubes as wide as the distance: only the neighbouring cubes can hold one that is too near.
class TakenPeaks {
public:
    explicit TakenPeaks(double distance) : distance_(std::max(1.0, distance)) {}

    bool hasOneNear(const Peak& peak) const {
        const Cell cell = cellOf(peak);
        for (long k = -1; k <= 1; ++k) {
            for (long j = -1; j <= 1; ++j) {
                for (long i = -1; i <= 1; ++i) {
                    const auto found = cells_.find({cell[0] + i, cell[1] + j, cell[2] + k});
                    if (found == cells_.end()) continue;
                    for (const Peak& other : found->second) {
                        if (squaredDistance(peak, other) < distance_ * distance_) return true;
                    }
                }
            }
        }
        return false;
    }

    void add(const Peak& peak) { cells_[cellOf(peak)].push_back(peak); }

private:
    using Cell = std::array<long, 3>;

    Cell cellOf(const Peak& peak) const {
        Cell cell{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            cell[axis] = static_cast<long>(static_cast<double>(peak.position[axis]) / distance_);
        }
        return cell;
    }
    static double squaredDistance(const Peak& a, const Peak& b) {
        double sum = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double d = static_cast<double>(a.position[axis]) - static_cast<double>(b.position[axis]);
            sum += d * d;
        }
        return sum;
    }

    double distance_;
    std::map<Cell, std::vector<Peak>> cells_;
};

}  // namespace

std::vector<Peak> findPeaks(const ImageModel& scores, const PeakSelection& selection) {
    const Volume volume(scores);
    std::vector<Peak> maxima;
    for (std::size_t z = 0; z < volume.size().z; ++z) {
        for (std::size_t y = 0; y < volume.size().y; ++y) {
            for (std::size_t x = 0; x < volume.size().x; ++x) {
                const double score = volume.at(x, y, z);
                if (score >= selection.threshold && volume.isMaximum(x, y, z)) maxima.push_back({{x, y, z}, score});
            }
        }
    }
    std::stable_sort(maxima.begin(), maxima.end(), [](const Peak& a, const Peak& b) { return a.score > b.score; });

    TakenPeaks taken(selection.distance);
    std::vector<Peak> peaks;
    for (const Peak& peak : maxima) {
        if (peaks.size() == selection.maxCount) break;
        if (taken.hasOneNear(peak)) continue;
        taken.add(peak);
        peaks.push_back(peak);
    }
    return peaks;
}

}  // namespace zel::tool
