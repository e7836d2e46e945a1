#include "zel/children/Resize3d.h"

#include <algorithm>
#include <array>
#include <vector>

#include "algorithms/DefineAlgorithm.h"
#include "children/ChildImages.h"
#include "children/TrilinearVolume.h"

namespace zel {

ZEL_DEFINE_CHILD(Resize3d)

namespace {

/// Positions in the input of the output's voxels along an axis.
std::vector<double> positions(std::size_t inputSize, std::size_t outputSize) {
    const double last = static_cast<double>(inputSize - 1);
    std::vector<double> at(outputSize);
    for (std::size_t k = 0; k < outputSize; ++k) {
        const double centre = (static_cast<double>(k) + 0.5) * static_cast<double>(inputSize);
        at[k] = std::clamp(centre / static_cast<double>(outputSize) - 0.5, 0.0, last);
    }
    return at;
}

}  // namespace

void Resize3d::validate() const {
    children::requireVolume(inputImage);
    children::requireChoice(interpolation, 1, "trilinear");
    children::requireSize(outputSize);
    children::requireOther(outputImage, inputImage);
}

void Resize3d::execute() {
    const ImageModel& input = *inputImage.get();
    ImageModel& output = *outputImage.get();
    const children::TrilinearVolume volume(input);
    const ImageSize size = children::toImageSize(outputSize.get());
    children::shapeOutput(outputImage, input, size);
    const std::vector<double> xs = positions(volume.size().x, size.x);
    const std::vector<double> ys = positions(volume.size().y, size.y);
    const std::vector<double> zs = positions(volume.size().z, size.z);
    children::forEachRow(size, [&](const children::Row& row, double* voxels) {
        for (std::size_t x = 0; x < size.x; ++x) voxels[x] = volume.at(xs[x], ys[row.y], zs[row.z]);
        children::writeRow(output, row, voxels);
    });
    for (int axis = 0; axis < 3; ++axis) {
        const double voxels = static_cast<double>(input.getDimension(axis));
        output.setSpacing(axis, input.getSpacing(axis) * voxels / static_cast<double>(output.getDimension(axis)));
    }
}

}  // namespace zel
