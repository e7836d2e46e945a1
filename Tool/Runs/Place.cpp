#include "Runs/Place.h"

#include <algorithm>

#include "ImageFiles/Common/Rows.h"
#include "Runs/Devices.h"
#include "tarnway_cuda/CudaImageView.h"

namespace zel::tool {

std::string_view placeName(Place place) {
    if (place == Place::inPlace) return "in-place";
    return place == Place::host ? "host" : "device";
}

std::shared_ptr<tarnway::ImageView> viewInPlace(const ImageModel& image) {
    // A view has no other way to be told of memory that is only read.
    void* const voxels = const_cast<void*>(image.hostDataReadOnly());
    if (voxels == nullptr) return nullptr;
    const ImageSize size = imageSizeOf(image);
    return tarnway_cuda::CudaImageView::wrap(static_cast<tarnway::ElementType>(image.getDataType()), size.x, size.y,
                                             size.z, voxels);
}

Place choosePlace(Placement asked, bool gainsByIt, std::initializer_list<const ImageModel*> images) {
    if (asked != Placement::automatic) return asked == Placement::host ? Place::host : Place::device;
    const bool canBeInPlace =
        std::ranges::all_of(images, [](const ImageModel* image) { return image->hostDataReadOnly() != nullptr; });
    return gainsByIt && canBeInPlace && readsHostMemory(currentDevice()) ? Place::inPlace : Place::host;
}

}  // namespace zel::tool
