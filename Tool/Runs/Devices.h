#pragma once

#include <cstdint>
#include <string>

#include "zel/HostImage.h"
#include "zel/TarnwayImage.h"

namespace zel::tool {

/// A device's memory, in bytes.
struct DeviceMemory {
    std::uint64_t free = 0;
    std::uint64_t total = 0;
};

/// How many devices there are, at least 1.
/// @throws std::runtime_error with what is missing: the driver or a device.
int requireDevices();

/// Makes a device the current one. @throws std::runtime_error when it cannot be used.
void selectDevice(int device);

/// Of the current device. @throws std::runtime_error when it cannot be used.
DeviceMemory deviceMemory();
std::string deviceName(int device);
/// Whether it can use images in the host's memory in place.
bool readsHostMemory(int device);
int currentDevice();

/// An image in the memory of the current device. @throws std::runtime_error when it has not enough.
TarnwayImage makeDeviceImage(VoxelTypes type, const ImageSize& size);

}  // namespace zel::tool
