#pragma once

#include <cuda_runtime.h>

#include <cstddef>

namespace zel::cuda {

/// Queues a device-to-device copy of a volume; the caller synchronises.
/// @tparam T  an element of 1, 2, 4 or 8 bytes; sizes are in elements, pitches in bytes.
/// @throws RuntimeError when the copy is refused.
template <typename T>
void copyDeviceVolume(const T* src, std::size_t srcPitch, std::size_t srcSlicePitch, T* dst, std::size_t dstPitch,
                      std::size_t dstSlicePitch, std::size_t width, std::size_t height, std::size_t depth,
                      cudaStream_t stream);

}  // namespace zel::cuda
