#include "zel/children/ResetImage.h"

#include <algorithm>

#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"

namespace zel {

ZEL_DEFINE_CHILD(ResetImage)

void ResetImage::validate() const {
    children::requireReal(inputImage);
}

void ResetImage::execute() {
    const ImageSize size = children::sizeOf(*inputImage.get());
    children::shapeOutput(outputImage, *inputImage.get(), size);
    children::forEachRow(size, [&](const children::Row& row, double* voxels) {
        std::fill_n(voxels, size.x, value.get());
        children::writeRow(*outputImage.get(), row, voxels);
    });
}

}  // namespace zel
