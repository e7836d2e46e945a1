#include "zel/algorithms/CudaTemplateMatching3d.h"

#include <algorithm>
#include <array>

#include "Helper/raise.h"
#include "Validation.h"
#include "algorithms/DefineAlgorithm.h"
#include "zel/TemplateTransformation.h"

namespace zel::cuda {

ZEL_DEFINE_ALGORITHM(CudaTemplateMatching3d)

namespace {

using validation::NamedImage;

constexpr const char* thisFile = "Core/src/algorithms/CudaTemplateMatching3d";

void requireSameSpacing(const NamedImage& image, const NamedImage& reference) {
    for (int axis = 0; axis < 3; ++axis) {
        if (image.image->getSpacing(axis) == reference.image->getSpacing(axis)) continue;
        raise<RuntimeError>(thisFile, __LINE__, image.name, " has the spacing ", image.image->getSpacing(axis),
                            " along axis ", axis, "; it must have that of ", reference.name, ", ",
                            reference.image->getSpacing(axis));
    }
}

std::string boxText(const std::array<std::size_t, 3>& size) {
    return plainText(size[0], " x ", size[1], " x ", size[2]);
}

/// The largest box of the template under any row.
std::array<std::size_t, 3> requireBox(std::string_view name, const tarnway::DataFrameView* table,
                                      const ImageModel& templateImage, const ImageModel& image) {
    std::array<std::size_t, 3> templateSize{};
    std::array<double, 3> templateSpacing{};
    std::array<double, 3> imageSpacing{};
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        templateSize[a] = templateImage.getDimension(axis);
        templateSpacing[a] = templateImage.getSpacing(axis);
        imageSpacing[a] = image.getSpacing(axis);
    }
    std::array<std::size_t, 3> smallest{};
    std::array<std::size_t, 3> largest{};
    computeMinimalMaximalBoxSize(table, templateSize, templateSpacing, imageSpacing, smallest, largest);
    if (*std::max_element(largest.begin(), largest.end()) > maxLength) {
        raise<RuntimeError>(thisFile, __LINE__, name, " and the spacings make inputTemplate as large as ",
                            boxText(largest), "; at most ", maxLength, " are allowed");
    }
    return largest;
}

/// The half spectrum of a box is cut out of the filter's middle, with one column to spare.
void requireFilterHolds(const NamedImage& filter, const std::array<std::size_t, 3>& box) {
    const std::array<std::size_t, 3> needed = {box[0] + 1, box[1], box[2]};
    bool holds = true;
    std::array<std::size_t, 3> size{};
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        size[a] = filter.image->getDimension(axis);
        holds = holds && size[a] >= needed[a];
    }
    if (holds) return;
    raise<RuntimeError>(thisFile, __LINE__, filter.name, " is ", boxText(size), "; it must be at least ",
                        boxText(needed), ", the largest box of inputTemplate and one more along x");
}

}  // namespace

void CudaTemplateMatching3d::validate() const {
    using namespace validation;
    requireImage(inputImage);
    requireImage(inputTemplate);
    requireImage(outputScoreImage);
    requireImage(outputIndexImage);
    requireTile(tilingMode, tileSize);
    requireType(inputImage, codesOf(InstanceTypes{}));
    requireSameType(inputTemplate, inputImage);
    requireNotLarger(inputTemplate, inputImage);
    if (inputMask.get() != nullptr) {
        requireImage(inputMask);
        requireType(inputMask, codesOf(KernelTypes{}));
        requireSameSize(inputMask, inputTemplate);
        requireSameSpacing(inputMask, inputTemplate);
    }
    const tarnway::DataFrameView* const table = transformationTable.get().get();
    if (table != nullptr) requireTransformations(transformationTable.name(), *table);
    const auto box = requireBox(transformationTable.name(), table, *inputTemplate.get(), *inputImage.get());
    if (frequencyFilter.get() != nullptr) {
        requireImage(frequencyFilter);
        requireType(frequencyFilter, codesOf(KernelTypes{}));
        requireFilterHolds(frequencyFilter, box);
    }
    requireSameSize(outputScoreImage, inputImage);
    requireType(outputScoreImage, {VoxelTypes::float32});
    requireSameSize(outputIndexImage, inputImage);
    requireType(outputIndexImage, {VoxelTypes::uint8, VoxelTypes::uint16, VoxelTypes::uint32});
    for (const NamedImage output : {NamedImage(outputScoreImage), NamedImage(outputIndexImage)}) {
        for (const PropertyReadImage* const input : {&inputImage, &inputTemplate, &inputMask, &frequencyFilter}) {
            if (input->get() != nullptr) requireDistinct(output, *input);
        }
    }
    requireDistinct(outputIndexImage, outputScoreImage);
}

}  // namespace zel::cuda
