#include "zel/children/IntensityExtrema.h"

#include <limits>
#include <mutex>

#include "Helper/raise.h"
#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"

namespace zel {

ZEL_DEFINE_CHILD(IntensityExtrema)

namespace {

/// Before the first voxel: an empty range, which any voxel widens.
struct Extrema {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    // NaN fails both comparisons.
    void add(const Extrema& other) {
        low = other.low < low ? other.low : low;
        high = other.high > high ? other.high : high;
    }
};

}  // namespace

void IntensityExtrema::validate() const {
    children::requireReal(inputImage);
    if (outputMeasurement.get() == nullptr) {
        raise<RuntimeError>("Core/src/children/IntensityExtrema", __LINE__, outputMeasurement.name(),
                            " is missing; set it to a measurement");
    }
}

void IntensityExtrema::execute() {
    const ImageSize size = children::sizeOf(*inputImage.get());
    Extrema all;
    std::mutex mutex;
    children::forEachRow(size, [&](const children::Row& row, double* voxels) {
        children::readRow(*inputImage.get(), row, voxels);
        Extrema extrema;
        for (std::size_t x = 0; x < size.x; ++x) extrema.add({voxels[x], voxels[x]});
        const std::lock_guard lock(mutex);
        all.add(extrema);
    });
    const bool found = all.low <= all.high;
    *outputMeasurement.get()->minimum_tag.data() = found ? all.low : std::numeric_limits<double>::quiet_NaN();
    *outputMeasurement.get()->maximum_tag.data() = found ? all.high : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace zel
