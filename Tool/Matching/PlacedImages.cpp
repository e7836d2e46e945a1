#include "Matching/DeviceImages.h"

#include "ImageFiles/Common/Rows.h"
#include "Runs/Devices.h"

namespace zel::tool {

namespace {

std::unique_ptr<ImageModel> onDevice(const ImageModel& image) {
    auto result = std::make_unique<TarnwayImage>(makeDeviceImage(image.getDataType(), imageSizeOf(image)));
    copyVoxels(image, *result);
    result->enforceSameCharacteristics(&image, 3);
    return result;
}

}  // namespace

PlacedImages::PlacedImages(Placement placement, const ImageModel& input, ImageModel& score, ImageModel& index)
    : input_(input), score_(score), index_(index) {
    if (placement == Placement::host) return;
    deviceInput_ = onDevice(input);
    deviceScore_ = onDevice(score);
    deviceIndex_ = onDevice(index);
}

std::uint64_t PlacedImages::deviceBytes() const {
    std::uint64_t bytes = 0;
    for (const auto* const image : {&deviceInput_, &deviceScore_, &deviceIndex_}) {
        if (*image != nullptr) bytes += imageBytes((*image)->getDataType(), imageSizeOf(**image)).value_or(0);
    }
    return bytes;
}

void PlacedImages::copyResults(ImageModel& score, ImageModel& index) const {
    if (deviceScore_ == nullptr) return;
    copyVoxels(*deviceScore_, score);
    copyVoxels(*deviceIndex_, index);
}

}  // namespace zel::tool
