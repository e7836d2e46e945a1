#define cimg_display 0
#include <CImg.h>

#include "MedianPeers.h"

namespace zel::bench {

namespace {

template <typename T>
Peer peerOf(const std::shared_ptr<HostImage>& image, unsigned radius) {
    const auto width = static_cast<unsigned>(image->getDimension(0)),
               height = static_cast<unsigned>(image->getDimension(1));
    const auto source =
        std::make_shared<cimg_library::CImg<T>>(static_cast<const T*>(image->data()), width, height, 1, 1, true);
    return {"CImg", [=] { source->get_blur_median(2 * radius + 1); }, {}};
}

}  // namespace

Peers cimgMedianPeers(const std::shared_ptr<HostImage>& image, unsigned radius) {
    constexpr unsigned maxRadius = 7;
    if (radius > maxRadius) return {};
    switch (image->getDataType()) {
        case VoxelTypes::uint8:
            return {peerOf<std::uint8_t>(image, radius)};
        case VoxelTypes::uint16:
            return {peerOf<std::uint16_t>(image, radius)};
        case VoxelTypes::float32:
            return {peerOf<float>(image, radius)};
        default:
            return {};
    }
}

}  // namespace zel::bench
