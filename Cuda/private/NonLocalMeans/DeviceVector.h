#pragma once

#include <thrust/device_vector.h>

#include "DeviceAllocator.h"

namespace amnlm {

/// Device memory that Thrust works on: masks (one bool a voxel) and vectors of the filter.
template <typename T>
using DeviceVector = thrust::device_vector<T, DeviceAllocator<T>>;

/// The same for elements that are written before they are read: a new vector leaves them as they are in memory.
template <typename T>
using ScratchVector = thrust::device_vector<T, ScratchAllocator<T>>;

}  // namespace amnlm
