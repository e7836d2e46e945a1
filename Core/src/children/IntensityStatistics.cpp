#include "zel/children/IntensityStatistics.h"

#include <cmath>
#include <vector>

#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"

namespace zel {

ZEL_DEFINE_CHILD(IntensityStatistics)

namespace {

/// Mean of some voxels, and the sum of their squared distances from it: sums of plain squares would lose the deviation
/// of an image with a large offset.
struct Moments {
    double count = 0;
    double mean = 0;
    double squares = 0;
};

Moments momentsOf(const double* voxels, std::size_t count) {
    Moments moments;
    moments.count = static_cast<double>(count);
    for (std::size_t i = 0; i < count; ++i) moments.mean += voxels[i];
    moments.mean /= moments.count;
    for (std::size_t i = 0; i < count; ++i) {
        moments.squares += (voxels[i] - moments.mean) * (voxels[i] - moments.mean);
    }
    return moments;
}

/// Chan, Golub, LeVeque 1983: Algorithms for computing the sample variance.
Moments joined(const Moments& a, const Moments& b) {
    const double count = a.count + b.count;
    const double distance = b.mean - a.mean;
    return {count, a.mean + distance * b.count / count,
            a.squares + b.squares + distance * distance * a.count * b.count / count};
}

}  // namespace

void IntensityStatistics::validate() const {
    children::requireReal(inputImage);
}

void IntensityStatistics::execute() {
    const ImageSize size = children::sizeOf(*inputImage.get());
    std::vector<Moments> rows(size.y * size.z * size.i3 * size.i4);
    children::forEachRow(size, [&](const children::Row& row, double* voxels) {
        children::readRow(*inputImage.get(), row, voxels);
        rows[children::rowNumber(size, row)] = momentsOf(voxels, size.x);
    });
    // In the order of the rows, so that the sum does not depend on the threads.
    Moments all;
    for (const Moments& row : rows) all = joined(all, row);
    outputStandardDeviation = Scalar(std::sqrt(all.squares / all.count));
}

}  // namespace zel
