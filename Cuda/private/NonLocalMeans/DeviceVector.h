#pragma once

#include <thrust/device_vector.h>

#include "DeviceAllocator.h"

namespace amnlm {

/// Device memory that Thrust works on: masks (one bool a voxel) and vectors of the filter.
template <typename T>
using DeviceVector = thrust::device_vector<T, DeviceAllocator<T>>;

}  // namespace amnlm
