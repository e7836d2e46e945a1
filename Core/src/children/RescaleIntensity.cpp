#include "zel/children/RescaleIntensity.h"

#include <cmath>

#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"

namespace zel {

ZEL_DEFINE_CHILD(RescaleIntensity)

void RescaleIntensity::validate() const {
    children::requireReal(inputImage);
    children::requireChoice(inputRangeChoice, 1, "the range is inputRange");
    children::requireChoice(outputTypeChoice, 16, "the type of outputImage");
}

void RescaleIntensity::execute() {
    const ImageModel& input = *inputImage.get();
    const ImageSize size = children::sizeOf(input);
    children::shapeOutput(outputImage, input, size);
    const auto [low, high] = inputRange.get();
    const auto [lowest, highest] = outputRange.get();
    const double factor = (highest - lowest) / (high - low == 0 ? 1 : high - low);
    const double offset = lowest - factor * low;
    children::forEachRow(size, [&](const children::Row& row, double* voxels) {
        children::readRow(input, row, voxels);
        for (std::size_t x = 0; x < size.x; ++x) voxels[x] = std::fma(factor, voxels[x], offset);
        children::writeRow(*outputImage.get(), row, voxels);
    });
}

}  // namespace zel
