#include "Matching/PlacedImages.h"

#include "ImageFiles/Common/Rows.h"
#include "Runs/Devices.h"

namespace zel::tool {

namespace {

/// Null for the image itself.
std::unique_ptr<ImageModel> placed(const ImageModel& image, Place place) {
    if (place == Place::host) return nullptr;
    std::unique_ptr<TarnwayImage> result;
    if (place == Place::inPlace) {
        result = std::make_unique<TarnwayImage>(viewInPlace(image));
    } else {
        result = std::make_unique<TarnwayImage>(makeDeviceImage(image.getDataType(), imageSizeOf(image)));
        copyVoxels(image, *result);
    }
    result->enforceSameCharacteristics(&image, 3);
    return result;
}

}  // namespace

PlacedImages::PlacedImages(Place place, const ImageModel& input, ImageModel& score, ImageModel& index)
    : place_(place),
      input_(input),
      score_(score),
      index_(index),
      placedInput_(placed(input, place)),
      placedScore_(placed(score, place)),
      placedIndex_(placed(index, place)) {}

std::uint64_t PlacedImages::deviceBytes() const {
    if (place_ != Place::device) return 0;
    std::uint64_t bytes = 0;
    for (const auto* const image : {&placedInput_, &placedScore_, &placedIndex_})
        bytes += imageBytes((*image)->getDataType(), imageSizeOf(**image)).value_or(0);
    return bytes;
}

void PlacedImages::copyResults(ImageModel& score, ImageModel& index) const {
    if (place_ != Place::device) return;
    copyVoxels(*placedScore_, score);
    copyVoxels(*placedIndex_, index);
}

}  // namespace zel::tool
