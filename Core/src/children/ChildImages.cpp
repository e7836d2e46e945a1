#include "children/ChildImages.h"

#include <algorithm>
#include <vector>

#include "Helper/parallelRanges.h"
#include "Helper/raise.h"
#include "zel/ImageModelAdapter.h"
#include "zel/TemporaryImage.h"

namespace zel::children {

namespace {

constexpr const char* thisFile = "Core/src/children/ChildImages";

/// Fewer voxels than this are done sooner by one thread than a second one wakes up.
constexpr std::size_t voxelsPerTask = 8192;

std::string sizeText(const ImageSize& size) {
    return plainText(size.x, " x ", size.y, " x ", size.z, " x ", size.i3, " x ", size.i4);
}

[[noreturn]] void raiseRow(const char* verb, const Row& row) {
    raise<RuntimeError>(thisFile, __LINE__, "Cannot ", verb, " a row at the coordinates (0, ", row.y, ", ", row.z, ", ",
                        row.i3, ", ", row.i4, ") in the image");
}

}  // namespace

ImageSize sizeOf(const ImageModel& image) {
    return {image.getDimension(0), image.getDimension(1), image.getDimension(2), image.getDimension(3),
            image.getDimension(4)};
}

ImageSize toImageSize(const Vector3<int>& size) {
    return {static_cast<std::size_t>(size.x), static_cast<std::size_t>(size.y), static_cast<std::size_t>(size.z)};
}

std::size_t rowNumber(const ImageSize& size, const Row& row) {
    return ((row.i4 * size.i3 + row.i3) * size.z + row.z) * size.y + row.y;
}

void requireReal(const validation::NamedImage& image) {
    if (image.image == nullptr) raise<RuntimeError>(thisFile, __LINE__, image.name, " is missing; set it to an image");
    const ImageSize size = sizeOf(*image.image);
    if (size.x * size.y * size.z * size.i3 * size.i4 == 0) {
        raise<RuntimeError>(thisFile, __LINE__, image.name, " is ", sizeText(size), "; no axis may be empty");
    }
    if (isComplex(image.image->getDataType())) {
        raise<RuntimeError>(thisFile, __LINE__, image.name, " is of ", voxelTypeName(image.image->getDataType()),
                            "; its voxels must be real");
    }
}

void requireVolume(const validation::NamedImage& image) {
    requireReal(image);
    const ImageSize size = sizeOf(*image.image);
    if (size.i3 == 1 && size.i4 == 1) return;
    raise<RuntimeError>(thisFile, __LINE__, image.name, " is ", sizeText(size),
                        "; it must have one element along axes 3 and 4");
}

void requireSize(const Property<Vector3<int>>& size) {
    const Vector3<int>& given = size.get();
    if (given.x >= 1 && given.y >= 1 && given.z >= 1) return;
    raise<RuntimeError>(thisFile, __LINE__, size.name(), " is ", given.x, " x ", given.y, " x ", given.z,
                        "; each must be at least 1");
}

void requireOther(const PropertyWriteImage& output, const PropertyReadImage& input) {
    if (output.get() == nullptr)
        raise<RuntimeError>(thisFile, __LINE__, output.name(), " is missing; set it to an image");
    if (output.get() != input.get()) return;
    raise<RuntimeError>(thisFile, __LINE__, output.name(), " is the same image as ", input.name(),
                        "; give it one of its own");
}

void requireChoice(const PropertySingleChoice& choice, int known, const char* meaning) {
    if (choice.get() == known) return;
    raise<RuntimeError>(thisFile, __LINE__, choice.name(), " is ", choice.get(), "; the only choice is ", known, ", ",
                        meaning);
}

void shapeOutput(const PropertyWriteImage& output, const ImageModel& input, const ImageSize& size) {
    ImageModel* const image = output.get();
    if (image == nullptr) raise<RuntimeError>(thisFile, __LINE__, output.name(), " is missing; set it to an image");
    if (image == &input && sizeOf(input) == size) return;
    if (auto* const resizable = dynamic_cast<ResizableImage*>(image); resizable != nullptr && image != &input) {
        if (sizeOf(*image) != size || image->getDataType() != input.getDataType()) {
            resizable->reserve(input.getDataType(), size);
        }
        image->enforceSameCharacteristics(&input, 3);
        return;
    }
    if (sizeOf(*image) != size) {
        raise<RuntimeError>(thisFile, __LINE__, output.name(), " is ", sizeText(sizeOf(*image)), "; it must be ",
                            sizeText(size));
    }
    requireReal(output);
}

void readRow(const ImageModel& image, const Row& row, double* voxels) {
    const ImageModelAdapter asDouble(&image, VoxelTypes::float64, DataConvertionTypes::cast);
    if (!asDouble.readRow(image.getDimension(0), voxels, 0, row.y, row.z, row.i3, row.i4)) raiseRow("read", row);
}

void writeRow(ImageModel& image, const Row& row, const double* voxels) {
    ImageModelAdapter asDouble(&image, VoxelTypes::float64, DataConvertionTypes::cast);
    if (!asDouble.writeRow(image.getDimension(0), voxels, 0, row.y, row.z, row.i3, row.i4)) raiseRow("write", row);
}

void forEachRow(const ImageSize& size, const std::function<void(const Row& row, double* buffer)>& body) {
    const std::size_t rows = size.y * size.z * size.i3 * size.i4;
    const std::size_t grain = std::max<std::size_t>(1, voxelsPerTask / size.x);
    parallelRanges(rows, grain, [&](std::size_t begin, std::size_t end) {
        std::vector<double> buffer(size.x);
        for (std::size_t row = begin; row < end; ++row) {
            body({row % size.y, row / size.y % size.z, row / (size.y * size.z) % size.i3,
                  row / (size.y * size.z * size.i3)},
                 buffer.data());
        }
    });
}

}  // namespace zel::children
