#include "zel/children/SwapQuadrants.h"

#include <algorithm>
#include <vector>

#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"

namespace zel {

ZEL_DEFINE_CHILD(SwapQuadrants)

void SwapQuadrants::validate() const {
    children::requireReal(inputImage);
    children::requireChoice(direction, 0, "the centre moves to the corner");
}

void SwapQuadrants::execute() {
    const ImageModel& input = *inputImage.get();
    const ImageSize size = children::sizeOf(input);
    children::shapeOutput(outputImage, input, size);
    // All rows are read before the first is written: input and output may be one image.
    std::vector<double> voxels(size.x * size.y * size.z * size.i3 * size.i4);
    const auto at = [&](const children::Row& row) { return voxels.data() + children::rowNumber(size, row) * size.x; };
    children::forEachRow(size, [&](const children::Row& row, double* buffer) {
        children::readRow(input, row, buffer);
        std::rotate_copy(buffer, buffer + (size.x >> 1), buffer + size.x, at(row));
    });
    children::forEachRow(size, [&](const children::Row& row, double*) {
        children::Row source = row;
        source.y = (row.y + (size.y >> 1)) % size.y;
        source.z = (row.z + (size.z >> 1)) % size.z;
        children::writeRow(*outputImage.get(), row, at(source));
    });
}

}  // namespace zel
