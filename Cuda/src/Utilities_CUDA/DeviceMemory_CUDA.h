#pragma once

#include <cstddef>
#include <memory>

namespace zel::cuda {

/// A size in bytes for an allocation; where it cannot be counted, one that no device has.
std::size_t saturatingProduct(std::size_t a, std::size_t b);

/// Plain device memory, freed with its last owner. @throws RuntimeError when it cannot be had.
std::shared_ptr<void> allocateDeviceMemory(std::size_t bytes);

/// Device memory of `depth` slices of `height` rows of `widthBytes`, rows padded as the runtime likes them, freed with
/// its last owner.
/// @param pitch  gets the bytes from row to row.
std::shared_ptr<void> allocateDevicePitched(std::size_t& pitch, std::size_t widthBytes, std::size_t height,
                                            std::size_t depth);

/// How wide a device is, for launches that are shaped after it.
void getDeviceCoreInfo(int device, unsigned& multiProcessors, unsigned& coresPerMultiProcessor);

}  // namespace zel::cuda
