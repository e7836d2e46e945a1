#pragma once

#include <cstddef>

#include "Utilities_CUDA/DeviceImage.h"
#include "Utilities_CUDA/OffsetBytes.h"
#include "zel/Vector.h"

namespace zel::cuda {

/// A volume in device memory, seen but not owned. Pitches are bytes; a 2D image is a volume of one slice.
template <typename T>
struct DeviceVolume {
    T* data = nullptr;
    std::size_t pitch = 0;
    std::size_t slicePitch = 0;

    /// The part that begins at a voxel.
    DeviceVolume from(const Vector3<unsigned>& voxel) const {
        return {offsetBytes(data, voxel.z * slicePitch + voxel.y * pitch + voxel.x * sizeof(T)), pitch, slicePitch};
    }

    operator DeviceVolume<const T>() const { return {data, pitch, slicePitch}; }  // NOLINT: as pointers convert
};

template <typename T>
DeviceVolume<T> volumeOf(DeviceImage<T>& image) {
    return {image.data(), image.pitch(), image.slicePitch()};
}

}  // namespace zel::cuda
