#include "Matching/DeviceImages.h"

#include <new>
#include <stdexcept>

#include "ImageFiles/Common/Rows.h"
#include "Runs/Description.h"
#include "tarnway_cuda/CudaImageView.h"
#include "zel/TarnwayImage.h"

namespace zel::tool {

namespace {

std::unique_ptr<ImageModel> onDevice(const ImageModel& image) {
    const ImageSize size = imageSizeOf(image);
    try {
        auto result = std::make_unique<TarnwayImage>(tarnway_cuda::CudaImageView::allocate(
            static_cast<tarnway::ElementType>(image.getDataType()), size.x, size.y, size.z));
        copyVoxels(image, *result);
        result->enforceSameCharacteristics(&image, 3);
        return result;
    } catch (const std::bad_alloc&) {
        throw std::runtime_error("the device has not enough memory for images of " + toText(size) +
                                 "; leave them on the host and use --tile");
    }
}

}  // namespace

PlacedImages::PlacedImages(Placement placement, const ImageModel& input, ImageModel& score, ImageModel& index)
    : input_(input), score_(score), index_(index) {
    if (placement == Placement::host) return;
    deviceInput_ = onDevice(input);
    deviceScore_ = onDevice(score);
    deviceIndex_ = onDevice(index);
}

void PlacedImages::copyResults(ImageModel& score, ImageModel& index) const {
    if (deviceScore_ == nullptr) return;
    copyVoxels(*deviceScore_, score);
    copyVoxels(*deviceIndex_, index);
}

}  // namespace zel::tool
