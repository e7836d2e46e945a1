#pragma once

#include <initializer_list>
#include <string_view>

#include "Runs/RunOptions.h"
#include "Runs/TileChoice.h"
#include "zel/TarnwayImage.h"

namespace zel::tool {

/// Where the images of a run lie: in the host's memory, in the device's, or in the host's as if it were the device's.
enum class Place { host, device, inPlace };

/// As summaries say it.
std::string_view placeName(Place place);

/// The voxels of a slice or a volume as memory of a device that reads the host's; null where they do not lie in one
/// piece. They have to outlive the view. What shows an input is for reading only.
std::shared_ptr<tarnway::ImageView> viewInPlace(const ImageModel& image);

/// Where the options ask for it or leave it open.
/// @param gainsByIt  whether the algorithm is faster with its images in place, where the device and they allow that.
/// @param images     input and outputs.
Place choosePlace(Placement asked, bool gainsByIt, std::initializer_list<const ImageModel*> images);

/// An algorithm that cuts its images itself reads them row by row, and the core those that it has to convert: both find
/// them sooner in the host's memory. One that goes over them again and again does so faster in the device's.
/// @param algorithm  with its parameters set.
template <typename Algorithm>
bool gainsByImagesInPlace(const Algorithm& algorithm, VoxelTypes type) {
    if constexpr (requires { algorithm.neighborhood; }) {
        constexpr unsigned mostPasses = 3;  // of erosion, dilation and the like: one for each pixel of the radius
        if (algorithm.kernelRadius > mostPasses) return false;
    }
    return TakesTiles<Algorithm> && visitVoxelType(type, typename Algorithm::InstanceTypes{}, []<typename T>() {});
}

}  // namespace zel::tool
